#pragma once

#include "SRLib/Repository/ConfigurationStorage.h"
#include "libs/Files/PropertyListFile.h"
#include "libs/ThreadSafety/ThreadSafety.h"

namespace Agent {

// The file behind one scope of the configuration. Who only reads takes what was read or put in place last;
// who replaces it waits for the others who do.
class ConfigurationFile : public Config::ConfigurationStorage {
 public:
  // Its folder is made, and its place looked up, when it is first used.
  explicit ConfigurationFile(bool perUser) : perUser_(perUser) {}

  // Made on first use; a thread may still save while the process exits.
  [[nodiscard]] static ConfigurationFile& OfScope(bool perUser);

  [[nodiscard]] Tree Load() override;
  void Replace(const Change& change) override;
  void Refuse(std::size_t components) override;
  [[nodiscard]] Config::StorageFailures Failures() const override;

 private:
  // Of both scopes. Held only as long as copying takes, never while a file is read or written.
  static ThreadSafety::Mutex& SyncMutex();
  static void SyncLock(bool lock) SR_NO_THREAD_SAFETY_ANALYSIS;
  class SyncGuard;

  Files::PropertyListFile::Reading Read();
  void PutPellContainer(Files::PropertyListFile::Reading reading, PropertyList::Dictionary tree)
      SR_REQUIRES(turnOfWriters_);
  void Count(std::uint64_t Config::StorageFailures::*kind, const std::error_code& error);

  const bool perUser_;
  ThreadSafety::Mutex turnOfWriters_;
  Files::PropertyListFile::Reading wholeFile_ SR_GUARDED_BY(SyncMutex());
  Config::StorageFailures failures_ SR_GUARDED_BY(SyncMutex());
};

}  // namespace Agent
