#include "SRLib/Provider/StoreSearch.h"

#include <algorithm>
#include <cstdint>

namespace ServiceRecords {
namespace {

constexpr wchar_t kSchemeSeparator[] = L"://";
constexpr wchar_t kPathSeparator = L'/';

// An address beyond these is not cut back: in the log, each cut is compared with every store.
constexpr std::size_t kMaximumCharactersToCut = 4096;
constexpr std::ptrdiff_t kMaximumCuts = 128;
constexpr std::uint64_t kMaximumCheckRecords = 1000;

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

// Records the comparisons that a plain walk over the trimmed URLs makes, the first ones singly and the others
// as their number.
class CheckRecords {
 public:
  CheckRecords(const StoreURLIndex& stores, const SearchRecord& record)
      : trimmed_(stores.TrimmedURLs()), record_(record) {}
  ~CheckRecords() {
    if (count_ <= kMaximumCheckRecords) return;
    record_(L"further checks of trimmedStoreUrl: " + std::to_wstring(count_ - kMaximumCheckRecords));
  }
  CheckRecords(const CheckRecords&) = delete;
  CheckRecords& operator=(const CheckRecords&) = delete;

  // The URL is compared with the trimmed ones up to the place of an equal one, or with all of them.
  void Add(const std::wstring& url, std::size_t place) {
    if (!record_) return;
    const std::size_t checks = std::min(place + 1, trimmed_.size());
    for (std::size_t i = 0; i < checks && count_ + i < kMaximumCheckRecords; ++i) {
      record_(L"checking trimmedStoreUrl: " + url + L", against: " + std::wstring(trimmed_[i].url));
    }
    count_ += checks;
  }

 private:
  const std::vector<StoreURLIndex::Trimmed>& trimmed_;
  const SearchRecord& record_;
  std::uint64_t count_ = 0;
};

// Pass 2: the address cut back segment by segment. The uncut request is deliberately not compared.
const SRStore* FindByTrimmedAddress(const StoreURLIndex& stores, std::wstring url,
                                    const SearchRecord& record) {
  if (!MayBeCutBack(url)) return nullptr;
  if (record) record(L"full store address not found, checking by trimming URLs");
  CheckRecords records(stores, record);
  while (CutBack(url)) {
    const std::size_t place = stores.PlaceOfTrimmed(url);
    records.Add(url, place);
    if (place < stores.TrimmedURLs().size()) return stores.TrimmedURLs()[place].store;
  }
  return nullptr;
}

// Pass 3: host and port anywhere in a store's URL, the loose last resort.
const SRStore* FindByHostAndPort(const StoreURLIndex& stores, std::wstring address,
                                 const SearchRecord& record) {
  if (const std::size_t at = address.find(kSchemeSeparator); at != std::wstring::npos)
    address.erase(0, at + 3);
  if (const std::size_t at = address.find(kPathSeparator); at != std::wstring::npos) address.erase(at);
  if (address.empty()) return nullptr;
  if (record) {
    record(L"store address not found, looking for scheme-host-port, shpAddress is " + address);
  }
  return stores.FirstContaining(address);
}

}  // namespace

const SRStore* FindStoreByURL(const StoreURLIndex& stores, const std::wstring& url,
                              const SearchRecord& record) {
  const std::wstring lowered = LowerCased(url);
  const SRStore* found = stores.LastWithURL(lowered);  // deliberately not the first
  if (found == nullptr) found = FindByTrimmedAddress(stores, lowered, record);
  if (found == nullptr) found = FindByHostAndPort(stores, lowered, record);
  if (record && found == nullptr) record(L"failed to find matching store for URL: " + url);
  if (record && found != nullptr) {
    record(L"found matching store: " + found->GetStoreURL() + L", for URL: " + url);
  }
  return found;
}

}  // namespace ServiceRecords
