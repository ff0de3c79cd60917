#include "libs/Wording/MessageDictionary.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Wording::MessageDictionary {
namespace {

using PropertyList::Dictionary;

constexpr char kText[] = "Text";
constexpr char kPattern[] = "Pattern";
constexpr char kPlaces[] = "Places";
constexpr char kName[] = "Name";

template <class Kind>
Kind EntryOf(const Dictionary& dictionary, std::string_view key) {
  const PropertyList::Value* const value = dictionary.Find(key);
  const Kind* const entry = value != nullptr ? value->As<Kind>() : nullptr;
  return entry != nullptr ? *entry : Kind();
}

}  // namespace

Dictionary Of(const Message& message) {
  if (!message.IsOurs()) return {{kText, message.Text()}};
  PropertyList::Array places;
  for (const Place& place : message.Places()) {
    Dictionary entry = Of(place.message);
    entry.Set(kName, place.name);
    places.emplace_back(std::move(entry));
  }
  return {{kPattern, message.Text()}, {kPlaces, std::move(places)}};
}

Message Read(const Dictionary& dictionary) {
  auto pattern = EntryOf<std::string>(dictionary, kPattern);
  if (pattern.empty()) return EntryOf<std::string>(dictionary, kText);
  std::vector<Place> places;
  for (const PropertyList::Value& value : EntryOf<PropertyList::Array>(dictionary, kPlaces)) {
    if (const auto* const entry = value.As<Dictionary>())
      places.push_back({EntryOf<std::string>(*entry, kName), Read(*entry)});
  }
  return {std::move(pattern), std::move(places)};
}

}  // namespace Wording::MessageDictionary
