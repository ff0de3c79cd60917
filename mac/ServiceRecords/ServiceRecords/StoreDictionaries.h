#pragma once

#include "SRLib/PropertyList/PropertyList.h"
#include "SRLib/StoreSnapshot.h"

#include <memory>

// The stores of a list as dictionaries without beacon keys, their text as the bus carries it. A dictionary is
// made once: those of the stores that a list shares with the list before are kept. One thread.
class StoreDictionaries {
 public:
  // In the order of the ids; good until the next call.
  [[nodiscard]] const PropertyList::Array& Of(
      const std::shared_ptr<const ServiceRecords::StoreSnapshot>& stores);

 private:
  std::shared_ptr<const ServiceRecords::StoreSnapshot> stores_ =
      std::make_shared<ServiceRecords::StoreSnapshot>();
  PropertyList::Array dictionaries_;  // of stores_
};

// The dictionary of one store, in the same form.
[[nodiscard]] PropertyList::Dictionary BusStoreDictionary(const ServiceRecords::SRStore& store);
