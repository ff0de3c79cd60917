#include "Model/LocationWords.h"

#include "Shared/Translations.h"
#include "libs/NetworkLocation/NetworkLocation.h"

namespace Stores::LocationWords {

using namespace Windows;

Words Of(const std::optional<Location>& location) {
  switch (location ? location->number : Location().number) {
    case Wayfinding::kDeciding:
      return {Translated("Finding out where this computer is"), "network-wired-acquiring-symbolic"};
    case Wayfinding::kLAN:
      return {Translated("In the store’s network"), "network-wired-symbolic"};
    case Wayfinding::kOutside:
      return {Translated("Outside the store’s network"), "network-workgroup-symbolic"};
    case Wayfinding::kNone:
      return {Translated("No network leads to the store"), "network-offline-symbolic"};
    case Wayfinding::kVPN:
      return {Translated("In the store’s network through a VPN"), "network-vpn-symbolic"};
    case Wayfinding::kHotspot:
      return {Translated("Behind a hotspot’s sign-in page"), "network-wireless-hotspot-symbolic"};
    case Wayfinding::kPartlyInternal:
      return {Translated("Partly in the store’s network"), "network-wired-no-route-symbolic"};
    default:
      return {Translated("Not known to this program"), "dialog-question-symbolic"};
  }
}

}  // namespace Stores::LocationWords
