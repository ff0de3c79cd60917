#pragma once

#include <string>

namespace util {

// Replaces `text` with the whole content of the file. False, and `text` unchanged, when the file cannot be
// opened or is not a regular file. Reads one byte more than a document may have, so that a larger file is
// seen to be too large. Any thread.
[[nodiscard]] bool ReadUTF8File(const std::wstring& path, std::wstring& text);

// Blocks the calling thread for one second. False, without any delay, when the process is about to end.
[[nodiscard]] bool WaitOneSecond();

}  // namespace util
