// How the store that a URL points at is found in a list.
#include "SRLib/Platform/GenericCS.h"
#include "SRLib/SRProvider.h"
#include "libs/Trace/Trace.h"

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

// Writes the comparisons that a plain walk over the trimmed URLs makes into the trace log, the first ones
// singly and the others as their number.
class CheckRecords {
 public:
  explicit CheckRecords(const StoreURLIndex& stores)
      : trimmed_(stores.TrimmedURLs()), isWanted_(trace::IsEnabled()) {}
  ~CheckRecords() {
    if (count_ <= kMaximumCheckRecords) return;
    SR_TRACE(0) << "SRProvider::GetStoreFromURL further checks of trimmedStoreUrl: "
                << count_ - kMaximumCheckRecords;
  }
  CheckRecords(const CheckRecords&) = delete;
  CheckRecords& operator=(const CheckRecords&) = delete;

  // The URL is compared with the trimmed ones up to the place of an equal one, or with all of them.
  void Add(const std::wstring& url, std::size_t place) {
    if (!isWanted_) return;
    const std::size_t checks = std::min(place + 1, trimmed_.size());
    for (std::size_t i = 0; i < checks && count_ + i < kMaximumCheckRecords; ++i) {
      SR_TRACE(0) << "SRProvider::GetStoreFromURL checking trimmedStoreUrl: " << url
                  << ", against: " << trimmed_[i].url;
    }
    count_ += checks;
  }

 private:
  const std::vector<StoreURLIndex::Trimmed>& trimmed_;
  const bool isWanted_;
  std::uint64_t count_ = 0;
};

// Pass 2: the address cut back segment by segment. The uncut request is deliberately not compared.
const SRStore* FindByTrimmedAddress(const StoreURLIndex& stores, std::wstring url) {
  if (!MayBeCutBack(url)) return nullptr;
  SR_TRACE(0) << "SRProvider::GetStoreFromURL full store address not found, checking by trimming URLs";
  CheckRecords records(stores);  // the record above has decided whether the log is on
  while (CutBack(url)) {
    const std::size_t place = stores.PlaceOfTrimmed(url);
    records.Add(url, place);
    if (place < stores.TrimmedURLs().size()) return stores.TrimmedURLs()[place].store;
  }
  return nullptr;
}

// Pass 3: host and port anywhere in a store's URL, the loose last resort.
const SRStore* FindByHostAndPort(const StoreURLIndex& stores, std::wstring address) {
  if (const std::size_t at = address.find(kSchemeSeparator); at != std::wstring::npos)
    address.erase(0, at + 3);
  if (const std::size_t at = address.find(kPathSeparator); at != std::wstring::npos) address.erase(at);
  if (address.empty()) return nullptr;
  SR_TRACE(0)
      << "SRProvider::GetStoreFromURL store address not found, looking for scheme-host-port, shpAddress is "
      << address;
  return stores.FirstContaining(address);
}

}  // namespace

const SRStore* StoreSnapshot::ByURL(const std::wstring& url) const {
  const std::wstring lowered = LowerCased(url);
  const SRStore* found = urls_.LastWithURL(lowered);  // deliberately not the first
  if (found == nullptr) found = FindByTrimmedAddress(urls_, lowered);
  if (found == nullptr) found = FindByHostAndPort(urls_, lowered);
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
