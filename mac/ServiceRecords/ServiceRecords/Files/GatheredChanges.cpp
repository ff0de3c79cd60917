#include "Files/GatheredChanges.h"

#include <array>
#include <utility>

namespace {

GatheredChanges*& Slot(bool perUser) {
  thread_local std::array<GatheredChanges*, 2> slots{};
  return slots[perUser ? 1 : 0];
}

}  // namespace

GatheredChanges::GatheredChanges(bool perUser) : perUser_(perUser) {
  Slot(perUser_) = this;
}

GatheredChanges::~GatheredChanges() {
  Slot(perUser_) = nullptr;
}

GatheredChanges* GatheredChanges::OfThisThread(bool perUser) {
  return Slot(perUser);
}

ConfigurationFile::Tree GatheredChanges::Tree() {
  if (!asRead_) asRead_ = ConfigurationFile::OfScope(perUser_).Load();
  if (changes_.empty()) return asRead_;
  if (made_ == changes_.size()) return asChanged_;
  enumerated_.clear();
  if (!asChanged_) asChanged_ = std::make_shared<PropertyList::Dictionary>(*asRead_);
  static_cast<void>(Apply(std::span(changes_).subspan(made_), *asChanged_));
  made_ = changes_.size();
  return asChanged_;
}

NumberedContainers& GatheredChanges::ContainersOf(const PropertyList::Dictionary& dictionary) {
  return enumerated_.try_emplace(&dictionary, dictionary).first->second;
}

void GatheredChanges::PutInPlace() {
  if (!changes_.empty()) ConfigurationFile::OfScope(perUser_).PutInPlace(changes_);
  changes_.clear();
  asRead_.reset();
  asChanged_.reset();
  made_ = 0;
  enumerated_.clear();
}
