#include "Model/LocationWords.h"

#include "Shared/Translations.h"

namespace Stores::LocationWords {

using namespace Windows;

Words Of(std::uint64_t location) {
  switch (location) {
    case 0:
      return {Translated("Finding out where this computer is"), "network-wired-acquiring-symbolic"};
    case 1:
      return {Translated("In the store’s network"), "network-wired-symbolic"};
    case 2:
      return {Translated("Outside the store’s network"), "network-workgroup-symbolic"};
    case 3:
      return {Translated("No network leads to the store"), "network-offline-symbolic"};
    case 4:
      return {Translated("In the store’s network through a VPN"), "network-vpn-symbolic"};
    case 5:
      return {Translated("Behind a hotspot’s sign-in page"), "network-wireless-hotspot-symbolic"};
    case 6:
      return {Translated("Partly in the store’s network"), "network-wired-no-route-symbolic"};
    default:
      return {Translated("Not known to this program"), "dialog-question-symbolic"};
  }
}

}  // namespace Stores::LocationWords
