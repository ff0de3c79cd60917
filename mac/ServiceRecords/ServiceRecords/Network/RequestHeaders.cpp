#include "Network/RequestHeaders.h"

#include "libs/Text/TextHelpers.h"
#include "libs/Transfer/GetRequest.h"

namespace Agent {
namespace {

constexpr std::wstring_view kLineEnd = L"\r\n";

}  // namespace

bool AddHeaders(Transfer::GetRequest& request, std::wstring_view extraHeaders) {
  std::size_t end = extraHeaders.find(kLineEnd);
  for (; end != std::wstring_view::npos; end = extraHeaders.find(kLineEnd)) {
    if (!request.AddHeader(util::narrow(extraHeaders.substr(0, end)))) return false;
    extraHeaders.remove_prefix(end + kLineEnd.size());
  }
  return true;
}

}  // namespace Agent
