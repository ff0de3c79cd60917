#include "Files/ConfigurationFile.h"

#include "DbgTrace.h"
#include "Files/PreferenceFile.h"
#include "libs/Lifetime/NoDestructor.h"

#include <string>
#include <utility>

namespace Agent {
namespace {

const Files::PropertyListFile& FileOf(bool perUser) {
  static const Lifetime::NoDestructor<Files::PropertyListFile> user(preferenceFile(true));
  static const Lifetime::NoDestructor<Files::PropertyListFile> machine(preferenceFile(false));
  return perUser ? *user : *machine;
}

std::string Reason(const std::error_code& error) {
  if (error == std::errc::file_exists) return "the file is damaged, and there is no free name for its copy";
  return error.message();
}

}  // namespace

ThreadSafety::Mutex& ConfigurationFile::SyncMutex() {
  static Lifetime::NoDestructor<ThreadSafety::Mutex> mutex;
  return *mutex;
}

void ConfigurationFile::SyncLock(bool lock) {
  if (lock) {
    SyncMutex().lock();
  } else {
    SyncMutex().unlock();
  }
}

class SR_SCOPED_CAPABILITY ConfigurationFile::SyncGuard {
 public:
  SyncGuard() SR_ACQUIRE(SyncMutex()) SR_NO_THREAD_SAFETY_ANALYSIS { SyncLock(true); }
  ~SyncGuard() SR_RELEASE() SR_NO_THREAD_SAFETY_ANALYSIS { SyncLock(false); }
  SyncGuard(const SyncGuard&) = delete;
  SyncGuard& operator=(const SyncGuard&) = delete;
};

ConfigurationFile& ConfigurationFile::OfScope(bool perUser) {
  static Lifetime::NoDestructor<ConfigurationFile> user(true);
  static Lifetime::NoDestructor<ConfigurationFile> machine(false);
  return perUser ? *user : *machine;
}

ConfigurationFile::Tree ConfigurationFile::Load() {
  return Read().Root();
}

Files::PropertyListFile::Reading ConfigurationFile::Read() {
  Files::PropertyListFile::Reading before;
  {
    const SyncGuard guard;
    before = wholeFile_;
  }
  Files::PropertyListFile::Reading reading = FileOf(perUser_).Load(before);
  if (reading.Failure()) {
    Count(&Config::StorageFailures::reads, reading.Failure());
  } else {
    const SyncGuard guard;
    wholeFile_ = reading;
  }
  return reading;
}

void ConfigurationFile::Replace(const Change& change) {
  const ThreadSafety::MutexLock turn(turnOfWriters_);
  Files::PropertyListFile::Reading reading = Read();
  PropertyList::Dictionary tree = *reading.Root();
  if (change(tree)) PutPellContainer(std::move(reading), std::move(tree));
}

void ConfigurationFile::Refuse(std::size_t components) {
  CSRLog(2, "%s - key with %lu components is too deep or no text", "GetContainerAndKeyForRawKey", components);
}

void ConfigurationFile::PutPellContainer(Files::PropertyListFile::Reading reading,
                                         PropertyList::Dictionary tree) {
  if (const std::error_code error = FileOf(perUser_).Save(reading, std::move(tree))) {
    CSRLog(2, "failed to write preferences to: %@", FileOf(perUser_).Path().string());
    Count(&Config::StorageFailures::writes, error);
    return;
  }
  // Swapped, so that the old tree goes when the lock does not wait for it.
  const SyncGuard guard;
  std::swap(wholeFile_, reading);
}

void ConfigurationFile::Count(std::uint64_t Config::StorageFailures::*kind, const std::error_code& error) {
  const SyncGuard guard;
  ++(failures_.*kind);
  failures_.latest = FileOf(perUser_).Path().string() + ": " + Reason(error);
}

Config::StorageFailures ConfigurationFile::Failures() const {
  const SyncGuard guard;
  return failures_;
}

}  // namespace Agent
