#pragma once

#include <string>
#include <string_view>

// Text of others, such as addresses out of documents, in our own lines of a log.
namespace util::LogText {

// The text as one line: control characters and line separators are blanks, and of each address with a scheme
// (up to a blank or a quotation mark) the user part and the query are left out. UTF-8. Any thread.
[[nodiscard]] std::string Line(std::string_view utf8);

// The same of a text that is one address, whatever it looks like.
[[nodiscard]] std::string Address(std::string_view utf8);

}  // namespace util::LogText
