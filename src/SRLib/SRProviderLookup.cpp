// How the provider finds the store that a URL points at.
#include "SRLib/SRProvider.h"
#include "SRLib/Trace.h"

#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <map>
#include <optional>

namespace ServiceRecords {
namespace {

constexpr wchar_t kDiscoverySuffix[] = L"/discovery";
constexpr wchar_t kSchemeSeparator[] = L"://";
constexpr wchar_t kPathSeparator = L'/';

// Whatever the locale of the process; where there is no UTF-8 locale, ASCII only.
wchar_t LowerCased(wchar_t character) {
  static const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  const wint_t wide = std::char_traits<wchar_t>::to_int_type(character);
  return static_cast<wchar_t>(unicode != nullptr ? ::towlower_l(wide, unicode) : ::towlower(wide));
}

std::wstring LowerCase(std::wstring text) {
  std::transform(text.begin(), text.end(), text.begin(), LowerCased);
  return text;
}

using StoreChoice = std::optional<SRStore>;

// Pass 1: the whole address. Of several stores with the same URL the last one is taken: deliberate.
StoreChoice FindByWholeAddress(const StoreMap& stores, const std::wstring& url) {
  StoreChoice found;
  for (const auto& [id, store] : stores) {
    if (LowerCase(store.GetStoreURL()) == url) found = store;
  }
  return found;
}

// Store URLs without their discovery suffix; the first store of a URL keeps it.
std::map<std::wstring, SRStore> TrimmedStoreURLs(const StoreMap& stores) {
  std::map<std::wstring, SRStore> trimmed;
  for (const auto& [id, store] : stores) {
    std::wstring url = LowerCase(store.GetStoreURL());
    if (url.ends_with(kDiscoverySuffix)) url.erase(url.rfind(kDiscoverySuffix));
    trimmed.emplace(url, store);
  }
  return trimmed;
}

// Removes the last path segment with its slash. The host and the first slash after it are never cut away.
bool CutBack(std::wstring& url) {
  const std::size_t separator = url.find(kSchemeSeparator);
  const std::size_t host = separator == std::wstring::npos ? 0 : separator + 3;
  const std::size_t first = url.find(kPathSeparator, host);
  const std::size_t last = url.rfind(kPathSeparator);
  if (first == std::wstring::npos || last <= first) return false;
  url.erase(last);
  return true;
}

// Pass 2: the address cut back segment by segment. The uncut request is deliberately not compared.
StoreChoice FindByTrimmedAddress(const StoreMap& stores, std::wstring url) {
  SR_TRACE(0) << "SRProvider::GetStoreFromURL full store address not found, checking by trimming URLs";
  const auto trimmed = TrimmedStoreURLs(stores);
  while (CutBack(url)) {
    for (const auto& [key, store] : trimmed) {
      SR_TRACE(0) << "SRProvider::GetStoreFromURL checking trimmedStoreUrl: " << url << ", against: " << key;
      if (url == key) return store;
    }
  }
  return std::nullopt;
}

// Pass 3: host and port anywhere in a store's URL, the loose last resort.
StoreChoice FindByHostAndPort(const StoreMap& stores, std::wstring address) {
  if (const std::size_t at = address.find(kSchemeSeparator); at != std::wstring::npos)
    address.erase(0, at + 3);
  if (const std::size_t at = address.find(kPathSeparator); at != std::wstring::npos) address.erase(at);
  if (address.empty()) return std::nullopt;
  SR_TRACE(0)
      << "SRProvider::GetStoreFromURL store address not found, looking for scheme-host-port, shpAddress is "
      << address;
  for (const auto& [id, store] : stores) {
    if (LowerCase(store.GetStoreURL()).find(address) != std::wstring::npos) return store;
  }
  return std::nullopt;
}

}  // namespace

bool SRProvider::GetStoreFromURL(const std::wstring& url, SRStore& store) const {
  const StoreMap stores = GetStores();
  const std::wstring lowered = LowerCase(url);
  StoreChoice found = FindByWholeAddress(stores, lowered);
  if (!found) found = FindByTrimmedAddress(stores, lowered);
  if (!found) found = FindByHostAndPort(stores, lowered);
  if (!found) {
    SR_TRACE(0) << "SRProvider::GetStoreFromURL failed to find matching store for URL: " << url;
    return false;
  }
  store = *found;
  SR_TRACE(0) << "SRProvider::GetStoreFromURL found matching store: " << store.GetStoreURL()
              << ", for URL: " << url;
  return true;
}

}  // namespace ServiceRecords
