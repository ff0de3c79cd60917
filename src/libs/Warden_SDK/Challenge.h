#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Warden {

// One challenge of a server (RFC 9110, 11.3).
struct Challenge {
  std::string scheme;  // lower case
  std::string token;   // token68, as of Negotiate; empty where there are parameters
  std::vector<std::pair<std::string, std::string>> parameters;  // names in lower case, values unquoted

  // Null when there is no such parameter.
  [[nodiscard]] const std::string* Parameter(std::string_view name) const;
};

// Adds the challenges of one WWW-Authenticate value to the list. From the first
// malformed one on, and from one with a parameter given twice, the rest of the value is ignored.
void AppendChallenges(std::string_view value, std::vector<Challenge>& challenges);

}  // namespace Warden
