#pragma once

#include "libs/Transfer/CurlHandle.h"

#include <string_view>

// The header lines of a plain request: "Accept", then the lines of `extraHeaders` (each ended by CR LF; the
// rest after the last CR LF is left out), added without replacing. A line without a name and a colon is left
// out, and so is one that holds a bare CR, LF or NUL or begins with a blank or tab, which could pass for
// further lines or for more of the line before. So is an empty value whose name holds a semicolon, which no
// header's name may and which the library could not send. Null without memory.
[[nodiscard]] CurlListPtr RequestHeaders(std::wstring_view extraHeaders);
