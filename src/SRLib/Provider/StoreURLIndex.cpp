#include "SRLib/Provider/StoreURLIndex.h"

#include "libs/Text/TextHelpers.h"

#include <string.h>

#include <algorithm>

namespace ServiceRecords {

StoreURLIndex::StoreURLIndex(const ListedStores& stores) {
  byURL_.reserve(stores.size());
  trimmed_.reserve(stores.size());
  places_.reserve(stores.size());
  for (const auto& entry : stores) {
    byURL_.insert_or_assign(entry->url.Whole(), &entry->store);
    trimmed_.push_back({entry->url.Trimmed(), &entry->store});
    joined_ += entry->url.UTF8();
    places_.push_back({joined_.size(), entry.get()});
    joined_ += '/';
  }
  std::stable_sort(trimmed_.begin(), trimmed_.end(),
                   [](const Trimmed& one, const Trimmed& other) { return one.url < other.url; });
  const auto end = std::unique(trimmed_.begin(), trimmed_.end(),
                               [](const Trimmed& one, const Trimmed& other) { return one.url == other.url; });
  trimmed_.erase(end, trimmed_.end());
}

const SRStore* StoreURLIndex::LastWithURL(const std::wstring& url) const {
  const auto found = byURL_.find(url);
  return found == byURL_.end() ? nullptr : found->second;
}

std::size_t StoreURLIndex::PlaceOfTrimmed(std::wstring_view url) const {
  const auto place =
      std::lower_bound(trimmed_.begin(), trimmed_.end(), url,
                       [](const Trimmed& entry, std::wstring_view sought) { return entry.url < sought; });
  const bool isThere = place != trimmed_.end() && place->url == url;
  return isThere ? static_cast<std::size_t>(place - trimmed_.begin()) : trimmed_.size();
}

const SRStore* StoreURLIndex::FirstContaining(const std::wstring& text) const {
  const std::string utf8 = util::narrow(text);
  for (std::size_t from = 0; from < joined_.size();) {
    const void* const match =
        ::memmem(joined_.data() + from, joined_.size() - from, utf8.data(), utf8.size());
    if (match == nullptr) return nullptr;
    const auto at = static_cast<std::size_t>(static_cast<const char*>(match) - joined_.data());
    const auto place =
        std::lower_bound(places_.begin(), places_.end(), at,
                         [](const Place& own, std::size_t sought) { return own.end < sought; });
    // UTF-8 leaves out what Unicode does not have, so that more may match than should.
    if (place->store->url.Whole().find(text) != std::wstring::npos) return &place->store->store;
    from = place->end + 1;
  }
  return nullptr;
}

}  // namespace ServiceRecords
