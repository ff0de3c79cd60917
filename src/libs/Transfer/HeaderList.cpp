#include "libs/Transfer/HeaderList.h"

#include <string.h>

#include <string_view>

namespace Transfer {
namespace {

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

bool Append(CurlListPtr& list, const std::string& line) {
  curl_slist* const longer = curl_slist_append(list.get(), line.c_str());
  if (longer == nullptr) return false;
  static_cast<void>(list.release());
  list.reset(longer);
  return true;
}

}  // namespace

bool AppendHeader(CurlListPtr& list, std::string line) {
  bool appended = true;
  if (IsSendable(line)) {
    MakeLibraryForm(line);
    appended = Append(list, line);
  }
  ::explicit_bzero(line.data(), line.size());  // it may hold credentials
  return appended;
}

}  // namespace Transfer
