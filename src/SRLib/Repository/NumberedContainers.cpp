#include "SRLib/Repository/NumberedContainers.h"

namespace Config {

const std::string* NumberedContainers::NameOf(std::uint32_t number) {
  if (number < before_) {
    before_ = 0;
    place_ = 0;
  }
  for (; place_ < entries_->size(); ++place_) {
    const PropertyList::Entry& entry = (*entries_)[place_];
    if (entry.value.As<PropertyList::Dictionary>() == nullptr) continue;
    if (before_ == number) return &entry.key;
    ++before_;
  }
  return nullptr;
}

}  // namespace Config
