#pragma once

#include <string_view>

namespace Transfer {
class GetRequest;
}

namespace Agent {

// Adds to a request the lines of `extraHeaders`: each is ended by CR LF, the rest after the last CR LF is
// left out. False without memory.
[[nodiscard]] bool AddHeaders(Transfer::GetRequest& request, std::wstring_view extraHeaders);

}  // namespace Agent
