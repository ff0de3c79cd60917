#pragma once

#include <string_view>

class GetRequest;

// Adds to a request the lines of `extraHeaders`: each is ended by CR LF, the rest after the last CR LF is
// left out. False without memory.
[[nodiscard]] bool AddHeaders(GetRequest& request, std::wstring_view extraHeaders);
