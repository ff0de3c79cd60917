#pragma once

#include "SRLib/Provider/ListedStore.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ServiceRecords {

// Finds the stores of a list by their URLs. What is looked for has to be in lower case. Refers to the stores,
// which have to be kept. No search allocates more than what is looked for takes.
class StoreURLIndex {
 public:
  StoreURLIndex() = default;
  // `stores` in the order of the list.
  explicit StoreURLIndex(const ListedStores& stores);

  // The last store with that URL, or null.
  [[nodiscard]] const SRStore* LastWithURL(const std::wstring& url) const;

  // The trimmed URLs in their order, each with its first store.
  struct Trimmed {
    std::wstring_view url;
    const SRStore* store;
  };
  [[nodiscard]] const std::vector<Trimmed>& TrimmedURLs() const { return trimmed_; }
  // The place of that URL among them; their number when it is none of them.
  [[nodiscard]] std::size_t PlaceOfTrimmed(std::wstring_view url) const;

  // The first store whose URL contains the text, which has no slash; or null.
  [[nodiscard]] const SRStore* FirstContaining(const std::wstring& text) const;

 private:
  struct Place {
    std::size_t end;  // of the URL in joined_
    const ListedStore* store;
  };

  std::unordered_map<std::wstring_view, const SRStore*> byURL_;
  std::vector<Trimmed> trimmed_;
  std::string joined_;  // all URLs in UTF-8, a slash behind each
  std::vector<Place> places_;
};

}  // namespace ServiceRecords
