#include "MacWayfinderProxy.h"

#include "Bus/StoreDictionaries.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Wayfinder/Wayfinder.h"

namespace ServiceRecords {
namespace {

// Under the provider's lock, as the publication is.
StoreDictionaries& PublishedDictionaries() {
  static StoreDictionaries dictionaries(BeaconKeys::Included);
  return dictionaries;
}

}  // namespace

void SetAllServiceRecordsToList(const std::shared_ptr<const StoreSnapshot>& stores) {
  const PropertyList::SharedDictionaries& list = PublishedDictionaries().Of(stores);
  if (list.empty()) return Wayfinder::sharedInstance().setAllServiceRecordsToList(std::nullopt);
  return Wayfinder::sharedInstance().setAllServiceRecordsToList(list);
}

std::uint32_t LocationRelativeToStoreURL(const std::wstring& storeURL) {
  return Wayfinder::sharedInstance().locationRelativeToStoreURL(util::narrow(storeURL));
}

}  // namespace ServiceRecords
