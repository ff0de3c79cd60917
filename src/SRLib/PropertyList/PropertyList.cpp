#include "PropertyList.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace PropertyList {
namespace {

// Truncated towards zero and wrapped to 64 bits; 0 when it is not a number at all.
std::uint64_t WholeNumber(double value) {
  constexpr double kTwoTo64 = 18446744073709551616.0;
  if (!std::isfinite(value)) return 0;
  const double remainder = std::fmod(std::trunc(value), kTwoTo64);
  return remainder < 0 ? ~static_cast<std::uint64_t>(-remainder) + 1 : static_cast<std::uint64_t>(remainder);
}

}  // namespace

Dictionary::Dictionary() = default;
Dictionary::Dictionary(const Dictionary&) = default;
Dictionary::Dictionary(Dictionary&&) noexcept = default;
Dictionary& Dictionary::operator=(const Dictionary&) = default;
Dictionary& Dictionary::operator=(Dictionary&&) noexcept = default;
Dictionary::~Dictionary() = default;

Dictionary::Dictionary(std::initializer_list<Entry> entries) : Dictionary(std::vector<Entry>(entries)) {}

Dictionary::Dictionary(std::vector<Entry> entries) {
  entries_.reserve(entries.size());
  std::unordered_map<std::string, std::size_t> places;
  for (Entry& entry : entries) {
    const auto [known, isNew] = places.try_emplace(entry.key, entries_.size());
    if (isNew) {
      entries_.push_back(std::move(entry));
    } else {
      entries_[known->second].value = std::move(entry.value);
    }
  }
}

Value* Dictionary::Find(std::string_view key) {
  const auto found = std::ranges::find(entries_, key, &Entry::key);
  return found == entries_.end() ? nullptr : &found->value;
}

const Value* Dictionary::Find(std::string_view key) const {
  const auto found = std::ranges::find(entries_, key, &Entry::key);
  return found == entries_.end() ? nullptr : &found->value;
}

Value& Dictionary::Set(std::string_view key, Value value) {
  if (Value* const stored = Find(key)) return *stored = std::move(value);
  return entries_.emplace_back(Entry{std::string(key), std::move(value)}).value;
}

bool Dictionary::Erase(std::string_view key) {
  return std::erase_if(entries_, [key](const Entry& entry) { return entry.key == key; }) != 0;
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
