#pragma once

#include <string>

namespace TestSupport {

// The content of an ordinary file, whatever its size.
[[nodiscard]] bool ReadPlainDocument(const std::wstring& path, std::wstring& text, std::wstring& reason);

}  // namespace TestSupport
