#pragma once

#include "SRLib/Repository/ConfigurationStorage.h"

#include <functional>
#include <mutex>

namespace TestSupport {

// Stores a configuration's tree in memory, and fails as a file does when it is told to. Any thread.
class MemoryStorage : public Config::ConfigurationStorage {
 public:
  // Called before each write, on the thread that writes.
  std::function<void()> beforeWrite;
  // Called before each reading, on the thread that reads.
  std::function<void()> beforeRead;

  // Forgets the tree and the count.
  void Clear();
  // How often the tree would have been written to its file.
  [[nodiscard]] int Writes() const;
  // From now on its file cannot be read, and so not written either, or cannot be written. Clear mends it.
  void FailReads(bool fail);
  void FailWrites(bool fail);

  [[nodiscard]] Tree Load() override;
  void Replace(const Change& change) override;
  void Refuse(std::size_t /*components*/) override {}
  [[nodiscard]] Config::StorageFailures Failures() const override;

 private:
  // Null when the file cannot be written, which is counted.
  Tree BeginWrite();

  std::mutex turnOfWriters_;
  mutable std::mutex mutex_;
  Tree tree_ = std::make_shared<PropertyList::Dictionary>();
  int writes_ = 0;
  Config::StorageFailures failures_;
  bool readsFail_ = false;
  bool writesFail_ = false;
};

}  // namespace TestSupport
