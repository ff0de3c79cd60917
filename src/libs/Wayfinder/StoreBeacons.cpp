#include "libs/Wayfinder/StoreBeacons.h"

#include "libs/Text/TextHelpers.h"

#include <string_view>
#include <utility>

namespace Wayfinding {
namespace {

std::string Text(const PropertyList::Dictionary& dictionary, std::string_view key) {
  const PropertyList::Value* const value = dictionary.Find(key);
  const auto* const text = value == nullptr ? nullptr : value->As<std::string>();
  return text == nullptr ? std::string() : *text;
}

std::vector<std::string> Locations(const PropertyList::Dictionary& store, std::string_view key) {
  std::vector<std::string> locations;
  const PropertyList::Value* const value = store.Find(key);
  const auto* const beacons = value == nullptr ? nullptr : value->As<PropertyList::Array>();
  if (beacons == nullptr) return locations;
  for (const PropertyList::Value& beacon : *beacons) {
    if (const auto* const dictionary = beacon.As<PropertyList::Dictionary>())
      locations.push_back(Text(*dictionary, "BeaconLocation"));
  }
  return locations;
}

StoreBeacons ReadStore(const PropertyList::Dictionary& dictionary) {
  StoreBeacons store{.url = Text(dictionary, "StoreURL"),
                     .internal = Locations(dictionary, "StoreInternalBeacons"),
                     .external = Locations(dictionary, "StoreExternalBeacons")};
  if (store.internal.empty()) store.internal = {store.url};
  return store;
}

}  // namespace

std::string StoreKey(const std::string& url) {
  return util::AsciiLowerCased(std::string_view(url).substr(0, url.find_last_not_of('/') + 1));
}

std::map<std::string, StoreBeacons> ReadStoreList(const PropertyList::SharedDictionaries& list) {
  std::map<std::string, StoreBeacons> stores;
  for (const auto& dictionary : list) {
    StoreBeacons store = ReadStore(*dictionary);
    std::string key = StoreKey(store.url);
    stores.insert_or_assign(std::move(key), std::move(store));
  }
  return stores;
}

}  // namespace Wayfinding
