#pragma once

#include <nlohmann/json.hpp>

#include <ostream>

// How srctl writes JSON: ASCII throughout, members in the order in which they were set.
namespace jsonoutput {

using Json = nlohmann::ordered_json;

inline constexpr bool kOnlyAscii = true;

// Indented, for data as a whole.
inline void Print(std::ostream& out, const Json& value) {
  constexpr int kIndentation = 2;
  out << value.dump(kIndentation, ' ', kOnlyAscii) << '\n';
}

// One line, for data that goes on.
inline void PrintLine(std::ostream& out, const Json& value) {
  constexpr int kNoLineBreaks = -1;
  out << value.dump(kNoLineBreaks, ' ', kOnlyAscii) << '\n';
}

}  // namespace jsonoutput
