#pragma once

#include "Bus/StoreDictionary.h"
#include "SRLib/Provider/StoreSnapshot.h"
#include "libs/PropertyList/PropertyList.h"

#include <memory>

namespace Agent {

// The stores of a list as dictionaries of one form. A dictionary is made once: those of the stores that a
// list shares with the list before are kept. No lock of its own.
class StoreDictionaries {
 public:
  explicit StoreDictionaries(BeaconKeys beacons, TextForm form = util::narrow)
      : beacons_(beacons), form_(form) {}

  // In the order of the ids; the list is good until the next call.
  [[nodiscard]] const PropertyList::SharedDictionaries& Of(
      const std::shared_ptr<const ServiceRecords::StoreSnapshot>& stores);

 private:
  const BeaconKeys beacons_;
  const TextForm form_;
  std::shared_ptr<const ServiceRecords::StoreSnapshot> stores_ =
      std::make_shared<ServiceRecords::StoreSnapshot>();
  PropertyList::SharedDictionaries dictionaries_;  // of stores_
};

}  // namespace Agent
