#include "Network/RequestHeaders.h"

#include "libs/Text/TextHelpers.h"

#include <string.h>

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

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kNeverInALine("\r\n\0", 3);

bool HasBlankValue(std::string_view line) {
  return line.find_first_not_of(kBlanks, line.find(':') + 1) == std::string_view::npos;
}

bool IsSendable(std::string_view line) {
  const std::string_view name = line.substr(0, line.find(':'));
  if (name.empty() || name.size() == line.size() || kBlanks.find(name.front()) != std::string_view::npos)
    return false;
  if (HasBlankValue(line) && name.find(';') != std::string_view::npos) return false;
  return line.find_first_of(kNeverInALine) == std::string_view::npos;
}

// libcurl leaves out a header whose value is blank, unless a semicolon stands in the colon's place.
void MakeLibraryForm(std::string& line) {
  if (!HasBlankValue(line)) return;
  line.resize(line.find(':'));
  line += ';';
}

// False without memory. A line that cannot be sent is passed over.
bool AppendSendable(CurlListPtr& list, std::string line) {
  bool appended = true;
  if (IsSendable(line)) {
    MakeLibraryForm(line);
    appended = Append(list, line);
  }
  ::explicit_bzero(line.data(), line.size());  // it may hold credentials
  return appended;
}

}  // namespace

CurlListPtr RequestHeaders(std::wstring_view extraHeaders) {
  CurlListPtr list;
  if (!Append(list, "Accept: text/xml,application/xml")) return nullptr;
  std::size_t end = extraHeaders.find(kLineEnd);
  for (; end != std::wstring_view::npos; end = extraHeaders.find(kLineEnd)) {
    if (!AppendSendable(list, util::narrow(extraHeaders.substr(0, end)))) return nullptr;
    extraHeaders.remove_prefix(end + kLineEnd.size());
  }
  return list;
}
