#include "fakes/MemoryStorage.h"

#include <utility>

namespace TestSupport {

void MemoryStorage::Clear() {
  const std::lock_guard lock(mutex_);
  tree_ = std::make_shared<PropertyList::Dictionary>();
  writes_ = 0;
  readsFail_ = false;
  writesFail_ = false;
}

int MemoryStorage::Writes() const {
  const std::lock_guard lock(mutex_);
  return writes_;
}

void MemoryStorage::FailReads(bool fail) {
  const std::lock_guard lock(mutex_);
  readsFail_ = fail;
}

void MemoryStorage::FailWrites(bool fail) {
  const std::lock_guard lock(mutex_);
  writesFail_ = fail;
}

Config::StorageFailures MemoryStorage::Failures() const {
  const std::lock_guard lock(mutex_);
  return failures_;
}

MemoryStorage::Tree MemoryStorage::Load() {
  if (beforeRead) beforeRead();
  const std::lock_guard lock(mutex_);
  if (!readsFail_) return tree_;
  ++failures_.reads;
  failures_.latest = "the file cannot be read";
  return std::make_shared<PropertyList::Dictionary>();
}

MemoryStorage::Tree MemoryStorage::BeginWrite() {
  const std::lock_guard lock(mutex_);
  if (!readsFail_ && !writesFail_) return tree_;
  ++failures_.writes;
  failures_.latest = "the file cannot be written";
  return nullptr;
}

void MemoryStorage::Replace(const Change& change) {
  const std::lock_guard turn(turnOfWriters_);
  if (beforeWrite) beforeWrite();
  const Tree before = BeginWrite();
  if (before == nullptr) return;
  auto changed = std::make_shared<PropertyList::Dictionary>(*before);
  if (!change(*changed)) return;
  const std::lock_guard lock(mutex_);
  tree_ = std::move(changed);
  ++writes_;
}

}  // namespace TestSupport
