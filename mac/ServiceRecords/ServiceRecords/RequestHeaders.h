#pragma once

#include "CurlHandle.h"

#include <string_view>

// The header lines of a plain request: "Accept", then the lines of `extraHeaders` (each ended by CR LF; the
// rest after the last CR LF is left out), added without replacing. A line without a name and a colon is left
// out, and so is one that holds a bare CR, LF or NUL, which could otherwise pass for further lines. Null
// without memory.
[[nodiscard]] CurlListPtr RequestHeaders(std::wstring_view extraHeaders);
