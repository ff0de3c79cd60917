#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace Openings {

// What became of an opened file or of one of its stores, from what concerns the user least to the gravest.
enum class Outcome {
  Added,
  Replaced,
  Declined,
  ServerNotVerified,
  NotAServiceRecord,
  CouldNotAsk,
  NotSaved,
  Ended,
};

inline constexpr std::array<std::string_view, 8> kOutcomeNames = {
    "added",         "replaced",  "declined", "server-not-verified", "not-a-service-record",
    "could-not-ask", "not-saved", "ended"};

// As the bus tells it.
[[nodiscard]] constexpr std::string_view NameOf(Outcome outcome) {
  return kOutcomeNames.at(static_cast<std::size_t>(outcome));
}

// Nothing for a name that only another version of the agent knows.
[[nodiscard]] constexpr std::optional<Outcome> OutcomeOf(std::string_view name) {
  for (std::size_t outcome = 0; outcome < kOutcomeNames.size(); ++outcome) {
    if (kOutcomeNames.at(outcome) == name) return static_cast<Outcome>(outcome);
  }
  return std::nullopt;
}

}  // namespace Openings
