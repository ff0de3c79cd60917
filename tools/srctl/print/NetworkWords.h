#pragma once

#include "libs/Wording/Message.h"

#include <cstdint>

// The numbers of the beacon service in words. All text is ASCII.
namespace Srctl::NetworkWords {

struct LocationWords {
  const char* name;           // as the agent's log has it, NETWORK_LOCATION_...
  Wording::Message word;      // LAN, outside, ...
  Wording::Message sentence;  // what the word says, without a full stop
};

// Every number has words; one that has no meaning is undefined.
[[nodiscard]] LocationWords OfLocation(std::uint64_t location);

// How a gateway wants its users to log on, and its edition.
[[nodiscard]] const char* OfAuthentication(std::uint64_t authentication);
[[nodiscard]] const char* OfEdition(std::uint64_t edition);

}  // namespace Srctl::NetworkWords
