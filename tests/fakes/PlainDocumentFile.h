#pragma once

#include <string>

namespace testsupport {

// The content of an ordinary file, whatever its size.
[[nodiscard]] bool ReadPlainDocument(const std::wstring& path, std::wstring& text);

}  // namespace testsupport
