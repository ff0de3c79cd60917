#pragma once

#include <string>
#include <system_error>

namespace util {

// Replaces `text` with the whole content of the file. An error, and `text` unchanged, when the file cannot be
// opened or is not a regular file, which is is_a_directory whatever it is. Reads one byte more than a
// document may have, so that a larger file is seen to be too large. Any thread.
[[nodiscard]] std::error_code ReadDocumentFile(const std::wstring& path, std::wstring& text);
// The same; false on an error.
[[nodiscard]] bool ReadUTF8File(const std::wstring& path, std::wstring& text);

// Blocks the calling thread for one second. False, without any delay, when the process is about to end.
[[nodiscard]] bool WaitOneSecond();

}  // namespace util
