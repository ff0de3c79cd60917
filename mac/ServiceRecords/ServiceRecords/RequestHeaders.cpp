#include "RequestHeaders.h"

#include "SRLib/TextHelpers.h"

#include <string>

namespace {

constexpr std::wstring_view kLineEnd = L"\r\n";

// False without memory; the list is as it was then.
bool Append(CurlListPtr& list, const std::string& line) {
  curl_slist* const longer = curl_slist_append(list.get(), line.c_str());
  if (longer == nullptr) return false;
  static_cast<void>(list.release());
  list.reset(longer);
  return true;
}

bool IsSendable(std::string_view line) {
  const std::size_t colon = line.find(':');
  const bool named = colon != std::string_view::npos && colon != 0;
  return named && line.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

// libcurl leaves out a header whose value is blank, unless a semicolon stands in the colon's place.
std::string LibraryForm(const std::string& line) {
  const std::size_t colon = line.find(':');
  const bool blank = line.find_first_not_of(" \t", colon + 1) == std::string::npos;
  return blank ? line.substr(0, colon) + ";" : line;
}

}  // namespace

CurlListPtr RequestHeaders(std::wstring_view extraHeaders) {
  CurlListPtr list;
  if (!Append(list, "Accept: text/xml,application/xml")) return nullptr;
  std::size_t end = extraHeaders.find(kLineEnd);
  for (; end != std::wstring_view::npos; end = extraHeaders.find(kLineEnd)) {
    const std::string line = util::narrow(extraHeaders.substr(0, end));
    if (IsSendable(line) && !Append(list, LibraryForm(line))) return nullptr;
    extraHeaders.remove_prefix(end + kLineEnd.size());
  }
  return list;
}
