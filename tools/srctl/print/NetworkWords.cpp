#include "print/NetworkWords.h"

#include "libs/Wayfinder/NetworkLocationName.h"

#include <array>

namespace Srctl::NetworkWords {

using Wording::Worded;

namespace {

template <std::size_t count>
const char* WordAt(const std::array<const char*, count>& words, std::uint64_t number) {
  return number < count ? words[number] : "unknown";
}

}  // namespace

LocationWords OfLocation(std::uint64_t location) {
  const char* const name = Wayfinding::NetworkLocationName(location);
  switch (location) {
    case Wayfinder::kDeciding:
      return {name, Worded("deciding"), Worded("it is not decided yet where this machine stands")};
    case Wayfinder::kLAN:
      return {name, Worded("LAN"), Worded("this machine is in the store's network")};
    case Wayfinder::kOutside:
      return {name, Worded("outside"), Worded("this machine is outside the store's network")};
    case Wayfinder::kNone:
      return {name, Worded("none"),
              Worded("there is no network, or nothing that belongs to the store answers in it")};
    case Wayfinder::kVPN:
      return {name, Worded("VPN"), Worded("this machine is in the store's network through a VPN")};
    case Wayfinder::kHotspot:
      return {name, Worded("hotspot"), Worded("this machine is behind a hotspot's sign-in page")};
    case Wayfinder::kPartlyInternal:
      return {name, Worded("partly internal"),
              Worded("this machine reaches only a part of the store's network")};
    default:
      return {name, Worded("undefined"), Worded("the agent's answer is a number without a meaning")};
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

}  // namespace Srctl::NetworkWords
