// How the store that a URL points at is found in a list.
#include "SRLib/GenericCS.h"
#include "SRLib/SRProvider.h"
#include "SRLib/Trace.h"

#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <cstdint>
#include <map>

namespace ServiceRecords {
namespace {

constexpr wchar_t kDiscoverySuffix[] = L"/discovery";
constexpr wchar_t kSchemeSeparator[] = L"://";
constexpr wchar_t kPathSeparator = L'/';

// An address beyond these is not cut back: each cut is compared with every store.
constexpr std::size_t kMaximumCharactersToCut = 4096;
constexpr std::ptrdiff_t kMaximumCuts = 128;
constexpr std::uint64_t kMaximumCheckRecords = 1000;

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

// A store of the list that is searched; null when there is none.
using StoreChoice = const SRStore*;

// Pass 1: the whole address. Of several stores with the same URL the last one is taken: deliberate.
StoreChoice FindByWholeAddress(const StoreSnapshot& stores, const std::wstring& url) {
  StoreChoice found = nullptr;
  for (const SRStore& store : stores) {
    if (LowerCase(store.GetStoreURL()) == url) found = &store;
  }
  return found;
}

// Store URLs without their discovery suffix; the first store of a URL keeps it.
std::map<std::wstring, StoreChoice> TrimmedStoreURLs(const StoreSnapshot& stores) {
  std::map<std::wstring, StoreChoice> trimmed;
  for (const SRStore& store : stores) {
    std::wstring url = LowerCase(store.GetStoreURL());
    if (url.ends_with(kDiscoverySuffix)) url.erase(url.rfind(kDiscoverySuffix));
    trimmed.emplace(url, &store);
  }
  return trimmed;
}

// The first slash behind the host, which is never cut away; npos when there is none.
std::size_t StartOfPath(const std::wstring& url) {
  const std::size_t separator = url.find(kSchemeSeparator);
  return url.find(kPathSeparator, separator == std::wstring::npos ? 0 : separator + 3);
}

// Removes the last path segment with its slash.
bool CutBack(std::wstring& url) {
  const std::size_t first = StartOfPath(url);
  const std::size_t last = url.rfind(kPathSeparator);
  if (first == std::wstring::npos || last <= first) return false;
  url.erase(last);
  return true;
}

bool MayBeCutBack(const std::wstring& url) {
  if (url.size() > kMaximumCharactersToCut) return false;
  const std::size_t first = std::min(StartOfPath(url), url.size());
  const auto slashes =
      std::count(url.begin() + static_cast<std::ptrdiff_t>(first), url.end(), kPathSeparator);
  return slashes - 1 <= kMaximumCuts;
}

// Writes the comparisons into the trace log, the first ones singly and the others as their number.
class CheckRecords {
 public:
  CheckRecords() = default;
  ~CheckRecords() {
    if (count_ <= kMaximumCheckRecords) return;
    SR_TRACE(0) << "SRProvider::GetStoreFromURL further checks of trimmedStoreUrl: "
                << count_ - kMaximumCheckRecords;
  }
  CheckRecords(const CheckRecords&) = delete;
  CheckRecords& operator=(const CheckRecords&) = delete;

  void Add(const std::wstring& url, const std::wstring& key) {
    if (++count_ > kMaximumCheckRecords) return;
    SR_TRACE(0) << "SRProvider::GetStoreFromURL checking trimmedStoreUrl: " << url << ", against: " << key;
  }

 private:
  std::uint64_t count_ = 0;
};

// Pass 2: the address cut back segment by segment. The uncut request is deliberately not compared.
StoreChoice FindByTrimmedAddress(const StoreSnapshot& stores, std::wstring url) {
  if (!MayBeCutBack(url)) return nullptr;
  SR_TRACE(0) << "SRProvider::GetStoreFromURL full store address not found, checking by trimming URLs";
  const auto trimmed = TrimmedStoreURLs(stores);
  CheckRecords records;
  while (CutBack(url)) {
    for (const auto& [key, store] : trimmed) {
      records.Add(url, key);
      if (url == key) return store;
    }
  }
  return nullptr;
}

// Pass 3: host and port anywhere in a store's URL, the loose last resort.
StoreChoice FindByHostAndPort(const StoreSnapshot& stores, std::wstring address) {
  if (const std::size_t at = address.find(kSchemeSeparator); at != std::wstring::npos)
    address.erase(0, at + 3);
  if (const std::size_t at = address.find(kPathSeparator); at != std::wstring::npos) address.erase(at);
  if (address.empty()) return nullptr;
  SR_TRACE(0)
      << "SRProvider::GetStoreFromURL store address not found, looking for scheme-host-port, shpAddress is "
      << address;
  for (const SRStore& store : stores) {
    if (LowerCase(store.GetStoreURL()).find(address) != std::wstring::npos) return &store;
  }
  return nullptr;
}

}  // namespace

const SRStore* StoreSnapshot::ByURL(const std::wstring& url) const {
  const std::wstring lowered = LowerCase(url);
  StoreChoice found = FindByWholeAddress(*this, lowered);
  if (found == nullptr) found = FindByTrimmedAddress(*this, lowered);
  if (found == nullptr) found = FindByHostAndPort(*this, lowered);
  if (found == nullptr) {
    SR_TRACE(0) << "SRProvider::GetStoreFromURL failed to find matching store for URL: " << url;
  } else {
    SR_TRACE(0) << "SRProvider::GetStoreFromURL found matching store: " << found->GetStoreURL()
                << ", for URL: " << url;
  }
  return found;
}

bool SRProvider::GetStoreFromURL(const std::wstring& url, SRStore& store) const {
  std::shared_ptr<const StoreSnapshot> stores;
  {
    const CriticalSectionLock lock(*lock_);
    stores = stores_.Snapshot();
  }
  const SRStore* const found = stores->ByURL(url);
  if (found != nullptr) store = *found;
  return found != nullptr;
}

}  // namespace ServiceRecords
