#include "print/NetworkWords.h"

#include "libs/Wayfinder/Wayfinder.h"

#include <array>

namespace networkwords {
namespace {

template <std::size_t count>
const char* WordAt(const std::array<const char*, count>& words, std::uint64_t number) {
  return number < count ? words[number] : "unknown";
}

}  // namespace

LocationWords OfLocation(std::uint64_t location) {
  switch (location) {
    case Wayfinder::kDeciding:
      return {"NETWORK_LOCATION_DECIDING", "deciding", "it is not decided yet where this machine stands"};
    case Wayfinder::kLAN:
      return {"NETWORK_LOCATION_LAN", "LAN", "this machine is in the store's network"};
    case Wayfinder::kOutside:
      return {"NETWORK_LOCATION_OUTSIDE", "outside", "this machine is outside the store's network"};
    case Wayfinder::kNone:
      return {"NETWORK_LOCATION_NONE", "none",
              "there is no network, or nothing that belongs to the store answers in it"};
    case Wayfinder::kVPN:
      return {"NETWORK_LOCATION_VPN", "VPN", "this machine is in the store's network through a VPN"};
    case Wayfinder::kHotspot:
      return {"NETWORK_LOCATION_HOTSPOT", "hotspot", "this machine is behind a hotspot's sign-in page"};
    case Wayfinder::kPartlyInternal:
      return {"NETWORK_LOCATION_PARTLY_INTERNAL", "partly internal",
              "this machine reaches only a part of the store's network"};
    default:
      return {"NETWORK_LOCATION_UNDEFINED", "undefined", "the agent's answer is a number without a meaning"};
  }
}

const char* OfAuthentication(std::uint64_t authentication) {
  constexpr std::array kWords{"RSA", "none", "domain", "domain and RSA", "SMS", "the gateway knows"};
  return WordAt(kWords, authentication);
}

const char* OfEdition(std::uint64_t edition) {
  constexpr std::array kWords{"standard", "advanced", "enterprise"};
  return WordAt(kWords, edition);
}

}  // namespace networkwords
