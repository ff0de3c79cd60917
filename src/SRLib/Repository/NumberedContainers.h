#pragma once

#include "libs/PropertyList/PropertyList.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Config {

// The containers among the entries of one dictionary, by their number from 0 on. Asked in order, each is
// found from the one before. The dictionary has to stay as it is.
class NumberedContainers {
 public:
  explicit NumberedContainers(const PropertyList::Dictionary& dictionary) : entries_(&dictionary.Entries()) {}

  // Null when there are not so many.
  [[nodiscard]] const std::string* NameOf(std::uint32_t number);

 private:
  const std::vector<PropertyList::Entry>* entries_;
  std::uint32_t before_ = 0;  // how many lie before the place
  std::size_t place_ = 0;
};

}  // namespace Config
