#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace Openings {

// What became of an opened file or of one of its stores, from what concerns the user least to the gravest.
enum class OpeningOutcome {
  Added,
  Replaced,
  Declined,
  ServerNotVerified,
  NotAServiceRecord,
  CouldNotAsk,
  NotSaved,
  Ended,
};

inline constexpr std::array<std::string_view, 8> kOpeningOutcomeNames = {
    "added",         "replaced",  "declined", "server-not-verified", "not-a-service-record",
    "could-not-ask", "not-saved", "ended"};

// As the bus tells it.
[[nodiscard]] constexpr std::string_view OpeningOutcomeName(OpeningOutcome outcome) {
  return kOpeningOutcomeNames.at(static_cast<std::size_t>(outcome));
}

// Nothing for a name of another agent's.
[[nodiscard]] constexpr std::optional<OpeningOutcome> OpeningOutcomeOfName(std::string_view name) {
  for (std::size_t outcome = 0; outcome < kOpeningOutcomeNames.size(); ++outcome) {
    if (kOpeningOutcomeNames.at(outcome) == name) return static_cast<OpeningOutcome>(outcome);
  }
  return std::nullopt;
}

}  // namespace Openings
