#pragma once

#include "libs/Transfer/CurlHandle.h"

#include <string>

namespace Transfer {

// Adds a request's header line ("Name: value", UTF-8) to the list, without replacing. A line without a name
// and a colon is left out, and so is one that holds a bare CR, LF or NUL or begins with a blank or tab, which
// could pass for further lines or for more of the line before. So is an empty value whose name holds a
// semicolon, which no header's name may and which the library could not send. False without memory; the list
// is as it was then.
[[nodiscard]] bool AppendHeader(CurlListPtr& list, std::string line);

}  // namespace Transfer
