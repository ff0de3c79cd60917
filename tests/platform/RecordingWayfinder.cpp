#include "platform/RecordingWayfinder.h"

#include "libs/Wayfinder/LocationService.h"
#include "libs/Wayfinder/Wayfinder.h"

#include <map>
#include <utility>

namespace {

std::vector<std::optional<PropertyList::SharedDictionaries>> g_lists;
std::map<std::string, std::uint32_t> g_locations;

}  // namespace

Wayfinder::Wayfinder() = default;
Wayfinder::~Wayfinder() = default;

Wayfinder& Wayfinder::sharedInstance() {
  static Wayfinder instance;
  return instance;
}

std::uint32_t Wayfinder::locationRelativeToStoreURL(const std::string& url) {
  const auto location = g_locations.find(url);
  return location != g_locations.end() ? location->second : kNone;
}

void Wayfinder::setAllServiceRecordsToList(std::optional<PropertyList::SharedDictionaries> stores) {
  g_lists.push_back(std::move(stores));
}

namespace RecordingWayfinder {

std::vector<std::optional<PropertyList::SharedDictionaries>> TakeLists() {
  return std::exchange(g_lists, {});
}

void SetLocation(const std::string& storeURL, std::uint32_t location) {
  g_locations[storeURL] = location;
}

}  // namespace RecordingWayfinder
