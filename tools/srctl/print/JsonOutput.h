#pragma once

#include <nlohmann/json.hpp>

#include <ostream>

// How srctl writes JSON: ASCII throughout, members in the order in which they were set. What is not UTF-8, as
// the path of a file may be, is replaced by U+FFFD.
namespace Srctl::JsonOutput {

using Json = nlohmann::ordered_json;

inline constexpr bool kOnlyAscii = true;
inline constexpr auto kReplace = Json::error_handler_t::replace;

// Indented, for data as a whole.
inline void Print(std::ostream& out, const Json& value) {
  constexpr int kIndentation = 2;
  out << value.dump(kIndentation, ' ', kOnlyAscii, kReplace) << '\n';
}

// One line, for data that goes on.
inline void PrintLine(std::ostream& out, const Json& value) {
  constexpr int kNoLineBreaks = -1;
  out << value.dump(kNoLineBreaks, ' ', kOnlyAscii, kReplace) << '\n';
}

}  // namespace Srctl::JsonOutput
