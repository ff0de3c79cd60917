#include "MacWayfinderProxy.h"

#include "libs/Text/TextHelpers.h"
#include "libs/Wayfinder/Wayfinder.h"

namespace ServiceRecords {
namespace {

MacWayfinderProxy& SharedLibrary() {
  static MacWayfinderProxy proxy(
      {.setStores = [](auto stores) { Wayfinder::sharedInstance().setAllServiceRecordsToList(stores); },
       .locationRelativeTo =
           [](const auto& url) { return Wayfinder::sharedInstance().locationRelativeToStoreURL(url); }});
  return proxy;
}

}  // namespace

void MacWayfinderProxy::SetStores(const std::shared_ptr<const StoreSnapshot>& stores) {
  const PropertyList::SharedDictionaries& list = dictionaries_.Of(stores);
  if (list.empty()) return library_.setStores(std::nullopt);
  library_.setStores(list);
}

std::uint32_t MacWayfinderProxy::LocationRelativeTo(const std::wstring& storeURL) const {
  return library_.locationRelativeTo(util::narrow(storeURL));
}

void SetAllServiceRecordsToList(const std::shared_ptr<const StoreSnapshot>& stores) {
  SharedLibrary().SetStores(stores);
}

std::uint32_t LocationRelativeToStoreURL(const std::wstring& storeURL) {
  return SharedLibrary().LocationRelativeTo(storeURL);
}

}  // namespace ServiceRecords
