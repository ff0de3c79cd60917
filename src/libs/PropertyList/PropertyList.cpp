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

Dictionary::Dictionary() = default;
Dictionary::Dictionary(Dictionary&&) noexcept = default;
Dictionary& Dictionary::operator=(Dictionary&&) noexcept = default;
Dictionary::~Dictionary() = default;

Dictionary::Dictionary(const Dictionary& other)
    : entries_(other.entries_),
      inOrder_(other.inOrder_ ? std::make_unique<Places>(*other.inOrder_) : nullptr) {}

Dictionary& Dictionary::operator=(const Dictionary& other) {
  return *this = Dictionary(other);
}

Dictionary::Dictionary(std::initializer_list<Entry> entries) : Dictionary(std::vector<Entry>(entries)) {}

Dictionary::Dictionary(std::vector<Entry> entries) {
  if (entries.size() <= kFew) {
    entries_.reserve(entries.size());
    for (Entry& entry : entries) Set(entry.key, std::move(entry.value));
  } else {
    entries_ = std::move(entries);
    PutInOrder();
    JoinEqualNames();
  }
}

// Equal names stay in the order of their places.
void Dictionary::PutInOrder() {
  inOrder_.reset();
  if (entries_.size() <= kFew) return;
  inOrder_ = std::make_unique<Places>(entries_.size());
  std::iota(inOrder_->begin(), inOrder_->end(), 0U);
  std::ranges::stable_sort(*inOrder_, {}, NameIn(entries_));
}

// Of each name the first place keeps the last value.
void Dictionary::JoinEqualNames() {
  std::vector<bool> isRepeated(entries_.size());
  for (auto place = inOrder_->begin(); place != inOrder_->end();) {
    const auto first = place++;
    for (; place != inOrder_->end() && entries_[*place].key == entries_[*first].key; ++place) {
      entries_[*first].value = std::move(entries_[*place].value);
      isRepeated[*place] = true;
    }
  }
  const auto repeated = [&, place = std::size_t{0}](const Entry&) mutable { return isRepeated[place++]; };
  if (std::erase_if(entries_, repeated) != 0) PutInOrder();
}

Dictionary::Places::iterator Dictionary::Rank(std::string_view key) const {
  return std::ranges::lower_bound(*inOrder_, key, {}, NameIn(entries_));
}

std::size_t Dictionary::PlaceOf(std::string_view key) const {
  if (inOrder_) {
    const auto rank = Rank(key);
    return rank != inOrder_->end() && entries_[*rank].key == key ? *rank : entries_.size();
  }
  const auto found = std::ranges::find(entries_, key, &Entry::key);
  return static_cast<std::size_t>(found - entries_.begin());
}

Value* Dictionary::Find(std::string_view key) {
  const std::size_t place = PlaceOf(key);
  return place == entries_.size() ? nullptr : &entries_[place].value;
}

const Value* Dictionary::Find(std::string_view key) const {
  const std::size_t place = PlaceOf(key);
  return place == entries_.size() ? nullptr : &entries_[place].value;
}

Value& Dictionary::Set(std::string_view key, Value value) {
  if (Value* const stored = Find(key)) return *stored = std::move(value);
  const auto place = static_cast<std::uint32_t>(entries_.size());
  entries_.push_back(Entry{std::string(key), std::move(value)});
  if (inOrder_) {
    inOrder_->insert(Rank(key), place);
  } else {
    PutInOrder();
  }
  return entries_.back().value;
}

bool Dictionary::Erase(std::string_view key) {
  const std::size_t place = PlaceOf(key);
  if (place == entries_.size()) return false;
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(place));
  PutInOrder();
  return true;
}

bool Dictionary::Empty() const {
  return entries_.empty();
}

bool Dictionary::operator==(const Dictionary& other) const {
  return entries_ == other.entries_;
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
