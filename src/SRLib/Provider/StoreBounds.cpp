#include "SRLib/Provider/StoreBounds.h"

#include "libs/Text/TextHelpers.h"

#include <algorithm>

namespace ServiceRecords {
namespace {

constexpr std::size_t kFramingOfStore = 168;
constexpr std::size_t kFramingOfGateway = 104;

// Whether what was within the bound, or past it already, is now further past it.
bool Passes(std::size_t before, std::size_t after, std::size_t bound) {
  return after > std::max(before, bound);
}

std::string TooMany(std::size_t bound, const char* what) {
  return "more than " + std::to_string(bound) + " " + what;
}

std::optional<std::string> BoundPassed(const SRStore& before, const SRStore& after) {
  if (Passes(before.GetGateways().size(), after.GetGateways().size(), kMaximumGateways))
    return TooMany(kMaximumGateways, "gateways of a store");
  for (const BeaconType type : {BeaconType::Internal, BeaconType::External}) {
    if (Passes(before.Beacons(type).size(), after.Beacons(type).size(), kMaximumBeacons))
      return TooMany(kMaximumBeacons, "beacons of a kind of a store");
  }
  return std::nullopt;
}

std::size_t SizeInList(const StoreMap& stores) {
  std::size_t size = 0;
  for (const auto& [id, store] : stores) size += SizeInList(store);
  return size;
}

}  // namespace

std::size_t SizeInList(const SRStore& store) {
  std::size_t size = kFramingOfStore;
  for (const std::wstring& text : {store.GetStoreID(), store.GetStoreName(), store.GetStoreURL()})
    size += util::NarrowedSize(text);
  for (const SRGateway& gateway : store.GetGateways()) {
    size += kFramingOfGateway + util::NarrowedSize(gateway.Identity()) +
            util::NarrowedSize(gateway.GetLocation());
  }
  return size;
}

std::optional<std::string> BoundPassed(const StoreMap& held, const StoreMap& changed) {
  std::size_t count = held.size();
  std::size_t size = 0;
  std::size_t sizeReplaced = 0;
  for (const auto& [id, store] : changed) {
    const auto own = held.find(id);
    if (own == held.end()) ++count;
    if (own != held.end()) sizeReplaced += SizeInList(own->second);
    size += SizeInList(store);
    if (auto bound = BoundPassed(own != held.end() ? own->second : SRStore(), store)) return bound;
  }
  if (Passes(held.size(), count, kMaximumStores)) return TooMany(kMaximumStores, "stores");
  if (size <= sizeReplaced) return std::nullopt;  // the whole list need not be counted
  const std::size_t sizeBefore = SizeInList(held);
  if (Passes(sizeBefore, sizeBefore - sizeReplaced + size, kMaximumListBytes))
    return TooMany(kMaximumListBytes, "bytes of stores");
  return std::nullopt;
}

std::optional<std::string> BoundPassedByMerge(const StoreMap& held, const StoreMap& incoming,
                                              bool dsTrusted) {
  StoreMap changed = incoming;
  for (auto& [id, store] : changed) {
    const auto own = held.find(id);
    if (own == held.end()) continue;
    SRStore merged = own->second;
    merged.TakeOver(store, dsTrusted);
    store = std::move(merged);
  }
  return BoundPassed(held, changed);
}

}  // namespace ServiceRecords
