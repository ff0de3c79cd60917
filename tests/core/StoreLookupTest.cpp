#include "SRLib/Provider/StoreSearch.h"
#include "SRLib/Provider/StoreSnapshot.h"
#include "libs/Text/TextHelpers.h"
#include "support/StoreBuilders.h"

#include <gtest/gtest.h>
#include <wctype.h>

#include <algorithm>
#include <random>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

// The look-up as it reads in three plain passes over the list, and what it writes.
class PlainLookup {
 public:
  explicit PlainLookup(const StoreMap& stores) : stores_(stores) {}

  const SRStore* Find(const std::wstring& url) {
    const SRStore* found = ByWholeAddress(Lower(url));
    if (found == nullptr) found = ByTrimmedAddress(Lower(url));
    if (found == nullptr) found = ByHostAndPort(Lower(url));
    if (found != nullptr) {
      Write(L"found matching store: " + found->GetStoreURL() + L", for URL: " + url);
    } else {
      Write(L"failed to find matching store for URL: " + url);
    }
    return found;
  }

  [[nodiscard]] const std::vector<std::wstring>& Written() const { return written_; }

 private:
  static std::wstring Lower(std::wstring text) {
    const auto unicode = std::unique_ptr<std::remove_pointer_t<locale_t>, decltype(&::freelocale)>(
        ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr), ::freelocale);
    for (wchar_t& c : text) c = static_cast<wchar_t>(::towlower_l(static_cast<wint_t>(c), unicode.get()));
    return text;
  }

  void Write(const std::wstring& text) { written_.push_back(text); }

  const SRStore* ByWholeAddress(const std::wstring& url) const {
    const SRStore* last = nullptr;
    for (const auto& [id, store] : stores_) {
      if (Lower(store.GetStoreURL()) == url) last = &store;
    }
    return last;
  }

  const SRStore* ByTrimmedAddress(std::wstring url) {
    const std::wstring suffix = L"/discovery";
    Write(L"full store address not found, checking by trimming URLs");
    std::map<std::wstring, const SRStore*> table;
    for (const auto& [id, store] : stores_) {
      std::wstring key = Lower(store.GetStoreURL());
      if (key.ends_with(suffix)) key.resize(key.size() - suffix.size());
      table.emplace(key, &store);
    }
    for (;;) {
      const std::size_t scheme = url.find(L"://");
      const std::size_t first = url.find(L'/', scheme == std::wstring::npos ? 0 : scheme + 3);
      const std::size_t last = url.rfind(L'/');
      if (first == std::wstring::npos || last <= first) return nullptr;
      url.resize(last);
      for (const auto& [key, store] : table) {
        Write(L"checking trimmedStoreUrl: " + url + L", against: " + key);
        if (key == url) return store;
      }
    }
  }

  const SRStore* ByHostAndPort(std::wstring address) {
    if (const auto at = address.find(L"://"); at != std::wstring::npos) address.erase(0, at + 3);
    address.resize(std::min(address.find(L'/'), address.size()));
    if (address.empty()) return nullptr;
    Write(L"store address not found, looking for scheme-host-port, shpAddress is " + address);
    for (const auto& [id, store] : stores_) {
      if (Lower(store.GetStoreURL()).find(address) != std::wstring::npos) return &store;
    }
    return nullptr;
  }

  const StoreMap& stores_;
  std::vector<std::wstring> written_;
};

// Lists and requests from few pieces, so that they often meet.
class Generator {
 public:
  explicit Generator(unsigned int seed) : engine_(seed) {}

  StoreMap Stores() {
    StoreMap stores;
    for (std::size_t count = Below(9) * Below(6); count != 0; --count) {
      const std::wstring id(1, static_cast<wchar_t>(L'a' + Below(60)));
      stores[id] = Store(id, URL());
    }
    return stores;
  }

  std::wstring URL() {
    if (Below(4) == 0) return Noise();
    std::wstring url = Of({L"s://", L"S://", L"", L"t://", L"s:///"}) + Host();
    for (std::size_t segments = Below(4); segments != 0; --segments) url += L"/" + Segment();
    return url + Of({L"", L"", L"/", L"/discovery", L"/Discovery", L"/discovery/discovery", L"/discovery/"});
  }

 private:
  std::size_t Below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(engine_);
  }
  std::wstring Of(const std::vector<std::wstring>& choices) { return choices[Below(choices.size())]; }
  std::wstring Host() {
    return Of({L"h", L"H", L"h:1", L"hh", L"h.x", L"\u00c4", L"\u00e4", L"h\xD800", L"\xDC00", L""});
  }
  std::wstring Segment() {
    return Of({L"x", L"X", L"y", L"xy", L"discovery", L"\u0416", L"\u0436", L"", L":"});
  }
  std::wstring Noise() {
    static constexpr std::wstring_view kPieces = L"hHxX/:.\u00c4\u00e4\xD800\x110000";
    std::wstring noise;
    for (std::size_t length = Below(8); length != 0; --length) noise += kPieces[Below(kPieces.size())];
    return noise;
  }

  std::mt19937 engine_;
};

TEST(StoreLookupTest, TheIndexFindsAndRecordsWhatThePlainPassesDo) {
  std::size_t hits = 0;
  for (unsigned int seed = 0; seed < 1500; ++seed) {
    Generator generate(seed);
    const StoreMap stores = generate.Stores();
    const StoreSnapshot snapshot(stores);
    for (int request = 0; request < 4; ++request) {
      const std::wstring url = generate.URL();
      PlainLookup plain(stores);
      const SRStore* const expected = plain.Find(url);
      std::vector<std::wstring> written;
      const SRStore* const found =
          FindStoreByURL(snapshot.URLs(), url, [&written](const auto& step) { written.push_back(step); });
      ASSERT_EQ(found != nullptr, expected != nullptr) << seed << " " << util::narrow(url);
      if (found != nullptr) {
        ++hits;
        ASSERT_EQ(found->GetStoreID(), expected->GetStoreID()) << seed << " " << util::narrow(url);
      }
      ASSERT_EQ(written, plain.Written()) << seed << " " << util::narrow(url);
      ASSERT_EQ(FindStoreByURL(snapshot.URLs(), url, nullptr), found) << seed << " " << util::narrow(url);
    }
  }
  EXPECT_GT(hits, 1000U);
  EXPECT_LT(hits, 5000U);
}

// A snapshot that shares its stores with an earlier one has an index of its own.
TEST(StoreLookupTest, AnIndexIsOfItsOwnListAlone) {
  for (unsigned int seed = 0; seed < 300; ++seed) {
    Generator generate(seed);
    StoreMap stores = generate.Stores();
    auto before = std::make_unique<StoreSnapshot>(stores);
    stores.merge(generate.Stores());
    if (!stores.empty()) stores.erase(stores.begin());
    const StoreSnapshot after(stores, *before);
    before.reset();
    const std::wstring url = generate.URL();
    const SRStore* const found = FindStoreByURL(after.URLs(), url, nullptr);
    const SRStore* const expected = PlainLookup(stores).Find(url);
    ASSERT_EQ(found == nullptr ? L"-" : found->GetStoreID(),
              expected == nullptr ? L"-" : expected->GetStoreID())
        << seed << " " << util::narrow(url);
  }
}

}  // namespace
