#pragma once

#include "Files/TreeChange.h"
#include "SRLib/Platform/Configurator.h"
#include "libs/Files/PropertyListFile.h"

#include <memory>
#include <mutex>
#include <span>

// The file behind one scope of the configuration. Any thread. Who only reads takes what was read or put in
// place last, and waits for nobody; who writes waits for the other writers.
class ConfigurationFile {
 public:
  using Tree = std::shared_ptr<const PropertyList::Dictionary>;

  explicit ConfigurationFile(bool perUser);

  // Made on first use, never destroyed: a thread may still save while the process exits.
  [[nodiscard]] static ConfigurationFile& OfScope(bool perUser);

  // What the file holds now; an empty tree when it cannot be read, which is counted.
  [[nodiscard]] Tree Load();
  // Makes the changes to what the file holds now, and replaces it. That this failed is logged and counted.
  void PutInPlace(std::span<const TreeChange> changes);

  [[nodiscard]] Config::StorageFailures Failures() const;

 private:
  PropertyListFile::Reading Read();
  void PutPellContainer(PropertyListFile::Reading reading, PropertyList::Dictionary tree);
  void Count(std::uint64_t Config::StorageFailures::*kind, const std::error_code& error);

  const PropertyListFile file_;
  std::mutex turnOfWriters_;
  // Both are guarded by SyncLock.
  PropertyListFile::Reading wholeFile_;
  Config::StorageFailures failures_;
};
