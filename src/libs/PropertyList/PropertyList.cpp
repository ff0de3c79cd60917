#include "libs/PropertyList/PropertyList.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace PropertyList {
namespace {

// The most entries among which a name is found by looking through them.
constexpr std::size_t kFew = 16;

auto NameIn(const std::vector<Entry>& entries) {
  return [&entries](std::uint32_t place) -> std::string_view { return entries[place].key; };
}

// Truncated towards zero and wrapped to 64 bits; 0 when it is not a number at all.
std::uint64_t WholeNumber(double value) {
  constexpr double kTwoTo64 = 18446744073709551616.0;
  if (!std::isfinite(value)) return 0;
  const double remainder = std::fmod(std::trunc(value), kTwoTo64);
  return remainder < 0 ? ~static_cast<std::uint64_t>(-remainder) + 1 : static_cast<std::uint64_t>(remainder);
}

}  // namespace

// What copies of a dictionary share.
struct Dictionary::Content {
  // The place of the name among the entries; their number when it is none of them.
  [[nodiscard]] std::size_t PlaceOf(std::string_view key) const;
  // Where in `inOrder` the name's place is, or would be.
  [[nodiscard]] std::vector<std::uint32_t>::const_iterator Rank(std::string_view key) const;
  Value& Set(std::string_view key, Value value);
  void PutInOrder();
  void JoinEqualNames();

  std::vector<Entry> entries;
  // The places of the entries in the order of their names. Empty while there are so few that looking through
  // them is as fast.
  std::vector<std::uint32_t> inOrder;
};

// Equal names stay in the order of their places.
void Dictionary::Content::PutInOrder() {
  inOrder.clear();
  if (entries.size() <= kFew) return;
  inOrder.resize(entries.size());
  std::iota(inOrder.begin(), inOrder.end(), 0U);
  std::ranges::stable_sort(inOrder, {}, NameIn(entries));
}

// Of each name the first place keeps the last value.
void Dictionary::Content::JoinEqualNames() {
  std::vector<bool> isRepeated(entries.size());
  for (auto place = inOrder.begin(); place != inOrder.end();) {
    const auto first = place++;
    for (; place != inOrder.end() && entries[*place].key == entries[*first].key; ++place) {
      entries[*first].value = std::move(entries[*place].value);
      isRepeated[*place] = true;
    }
  }
  const auto repeated = [&, place = std::size_t{0}](const Entry&) mutable { return isRepeated[place++]; };
  if (std::erase_if(entries, repeated) != 0) PutInOrder();
}

std::vector<std::uint32_t>::const_iterator Dictionary::Content::Rank(std::string_view key) const {
  return std::ranges::lower_bound(inOrder, key, {}, NameIn(entries));
}

std::size_t Dictionary::Content::PlaceOf(std::string_view key) const {
  if (!inOrder.empty()) {
    const auto rank = Rank(key);
    return rank != inOrder.end() && entries[*rank].key == key ? *rank : entries.size();
  }
  const auto found = std::ranges::find(entries, key, &Entry::key);
  return static_cast<std::size_t>(found - entries.begin());
}

Value& Dictionary::Content::Set(std::string_view key, Value value) {
  if (const std::size_t place = PlaceOf(key); place != entries.size())
    return entries[place].value = std::move(value);
  const auto place = static_cast<std::uint32_t>(entries.size());
  entries.push_back(Entry{std::string(key), std::move(value)});
  if (!inOrder.empty()) {
    inOrder.insert(Rank(key), place);
  } else {
    PutInOrder();
  }
  return entries.back().value;
}

Dictionary::Dictionary() = default;
Dictionary::Dictionary(const Dictionary&) = default;
Dictionary::Dictionary(Dictionary&&) noexcept = default;
Dictionary& Dictionary::operator=(const Dictionary&) = default;
Dictionary& Dictionary::operator=(Dictionary&&) noexcept = default;
Dictionary::~Dictionary() = default;

Dictionary::Dictionary(std::initializer_list<Entry> entries) : Dictionary(std::vector<Entry>(entries)) {}

Dictionary::Dictionary(std::vector<Entry> entries) {
  if (entries.empty()) return;
  Content& content = content_.Change();
  if (entries.size() <= kFew) {
    content.entries.reserve(entries.size());
    for (Entry& entry : entries) content.Set(entry.key, std::move(entry.value));
  } else {
    content.entries = std::move(entries);
    content.PutInOrder();
    content.JoinEqualNames();
  }
}

const std::vector<Entry>& Dictionary::Entries() const {
  return content_.Get().entries;
}

Value* Dictionary::Find(std::string_view key) {
  const std::size_t place = content_.Get().PlaceOf(key);
  return place == Entries().size() ? nullptr : &content_.Change().entries[place].value;
}

const Value* Dictionary::Find(std::string_view key) const {
  const std::size_t place = content_.Get().PlaceOf(key);
  return place == Entries().size() ? nullptr : &Entries()[place].value;
}

Value& Dictionary::Set(std::string_view key, Value value) {
  return content_.Change().Set(key, std::move(value));
}

bool Dictionary::Erase(std::string_view key) {
  const std::size_t place = content_.Get().PlaceOf(key);
  if (place == Entries().size()) return false;
  Content& content = content_.Change();
  content.entries.erase(content.entries.begin() + static_cast<std::ptrdiff_t>(place));
  content.PutInOrder();
  return true;
}

bool Dictionary::Empty() const {
  return Entries().empty();
}

bool Dictionary::SharesEntriesWith(const Dictionary& other) const {
  return &content_.Get() == &other.content_.Get();
}

bool Dictionary::operator==(const Dictionary& other) const {
  return Entries() == other.Entries();
}

Value::Value(std::uint64_t value) {
  if (value <= static_cast<std::uint64_t>(INT64_MAX)) {
    storage_ = static_cast<std::int64_t>(value);
  } else {
    storage_ = value;
  }
}

std::optional<std::uint64_t> Value::AsNumber() const {
  if (const auto* number = As<std::int64_t>()) return static_cast<std::uint64_t>(*number);
  if (const auto* number = As<std::uint64_t>()) return *number;
  if (const auto* number = As<double>()) return WholeNumber(*number);
  if (const auto* boolean = As<bool>()) return *boolean ? 1 : 0;
  return std::nullopt;
}

}  // namespace PropertyList
