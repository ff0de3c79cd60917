#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

// Reading and writing on a descriptor that blocks, as much as was asked for: one call of the system may do
// less, or be interrupted. Any thread.
namespace Files {

// How many bytes there were until the end or the error.
struct Transferred {
  std::size_t bytes = 0;
  std::error_code error;
};

// Reads until the room is full or the content ends.
[[nodiscard]] Transferred ReadInto(int descriptor, std::span<char> room);

// Reads to the end, wherever that is by now, in place of what `content` holds; about `expectedBytes` are
// expected.
[[nodiscard]] std::error_code ReadAll(int descriptor, std::size_t expectedBytes, std::string& content);

[[nodiscard]] Transferred WriteAll(int descriptor, std::string_view content);

}  // namespace Files
