#include "SRLib/Repository/GatheredChanges.h"

#include <algorithm>
#include <utility>

namespace Config {
namespace {

// As few as the scopes that a thread saves at a time.
std::vector<GatheredChanges*>& AllOfThisThread() {
  thread_local std::vector<GatheredChanges*> all;
  return all;
}

}  // namespace

GatheredChanges::GatheredChanges(ConfigurationStorage& storage) : storage_(storage) {
  AllOfThisThread().push_back(this);
}

GatheredChanges::~GatheredChanges() {
  std::erase(AllOfThisThread(), this);
}

GatheredChanges* GatheredChanges::OfThisThread(const ConfigurationStorage& storage) {
  const auto& all = AllOfThisThread();
  const auto found = std::ranges::find_if(
      all, [&storage](const GatheredChanges* changes) { return &changes->storage_ == &storage; });
  return found != all.end() ? *found : nullptr;
}

ConfigurationStorage::Tree GatheredChanges::Tree() {
  if (!asRead_) asRead_ = storage_.Load();
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
  if (!changes_.empty())
    storage_.Replace([this](PropertyList::Dictionary& root) { return Apply(changes_, root); });
  changes_.clear();
  asRead_.reset();
  asChanged_.reset();
  made_ = 0;
  enumerated_.clear();
}

}  // namespace Config
