#pragma once

#include <string>

namespace Desktop {

// The form of a host name that people write: its labels in Unicode instead of "xn--...". What is no such name
// stays as it is. Any thread.
[[nodiscard]] std::string UnicodeHostName(const std::string& ascii);

}  // namespace Desktop
