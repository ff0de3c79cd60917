#include "SRLib/NetworkLocation.h"
#include "SRLib/Publication.h"
#include "SRLib/TextHelpers.h"
#include "StoreDictionary.h"
#include "libs/Wayfinder/Wayfinder.h"

namespace ServiceRecords {

void SetAllServiceRecordsToList(const std::shared_ptr<const StoreSnapshot>& stores) {
  if (stores->empty()) return Wayfinder::sharedInstance().setAllServiceRecordsToList(std::nullopt);
  PropertyList::Array list;
  list.reserve(stores->size());
  for (const SRStore& store : *stores) list.emplace_back(StoreDictionary(store, BeaconKeys::Included));
  return Wayfinder::sharedInstance().setAllServiceRecordsToList(std::move(list));
}

std::uint32_t LocationRelativeToStoreURL(const std::wstring& storeURL) {
  return Wayfinder::sharedInstance().locationRelativeToStoreURL(util::narrow(storeURL));
}

}  // namespace ServiceRecords
