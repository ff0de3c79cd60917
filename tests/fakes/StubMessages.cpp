#include "SRLib/Platform/Messages.h"

#include <map>
#include <mutex>
#include <string>

// A catalogue whose every text is "message" and its id, with an argument where the real text has one.
namespace util {
namespace {

bool HasArgument(int id) {
  return id == kMessageServerNotContacted || id == kMessageEmptyHostName ||
         id == kMessageCertificatesNotFetched;
}

}  // namespace

const wchar_t* MessageFromResourceW(int id) {
  static std::mutex mutex;
  static auto& texts = *new std::map<int, std::wstring>;
  const std::lock_guard lock(mutex);
  std::wstring& text = texts[id];
  if (text.empty()) text = L"message " + std::to_wstring(id) + (HasArgument(id) ? L" about %S" : L"");
  return text.c_str();
}

}  // namespace util
