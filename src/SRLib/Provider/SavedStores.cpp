#include "SRLib/Provider/SavedStores.h"

#include "SRLib/Platform/Configurator.h"
#include "SRLib/Platform/GenericFactories.h"
#include "SRLib/SRRegistryConfig.h"
#include "libs/RetryDelay/RetryDelay.h"
#include "libs/Trace/SystemLog.h"
#include "libs/Trace/Trace.h"

#include <exception>
#include <utility>

namespace ServiceRecords {
namespace {

Config::StorageFailures Failures() {
  return CGenericFactories::Instance().UserConfiguration().Failures();
}

// Why the stores were not saved; nothing when they were.
std::optional<std::string> TrySave(StoreMap& stores) {
  try {
    const std::uint64_t failuresBefore = Failures().writes;
    SRRegistryConfig().SaveStores(stores);
    Config::StorageFailures failures = Failures();
    if (failures.writes == failuresBefore) return std::nullopt;
    return std::move(failures.latest);
  } catch (const std::exception& exception) {
    return exception.what();
  }
}

}  // namespace

void SavedStores::RetryWith(StartTimer startTimer) {
  startTimer_ = std::move(startTimer);
  if (state_ != State::Good && startTimer_) startTimer_(delay_);
}

bool SavedStores::TakeRetry() {
  if (state_ == State::Good) return false;
  WaitForRetry();
  return true;
}

void SavedStores::WaitForRetry() {
  delay_ = RetryDelay(attempts_++);
  if (startTimer_) startTimer_(delay_);
}

SavedStores::Reading SavedStores::Read() {
  const std::uint64_t failuresBefore = Failures().reads;
  StoreMap stores = SRRegistryConfig().RestoreStores();
  const Config::StorageFailures failures = Failures();
  if (failures.reads == failuresBefore) return {.stores = std::move(stores), .problem = {}};
  return {.stores = std::nullopt,
          .problem = "the stores cannot be read, and are not changed until they can: " + failures.latest};
}

void SavedStores::TakeReading(const Reading& reading) {
  TakeResult(reading.stores ? State::Good : State::Unreadable, reading.problem);
}

void SavedStores::Save(StoreMap& stores) {
  const std::optional<std::string> failure = TrySave(stores);
  TakeResult(failure ? State::Unsaved : State::Good,
             "the stores cannot be saved, which is tried again: " + failure.value_or(""));
}

void SavedStores::TakeResult(State state, const std::string& problem) {
  const State before = state_.exchange(state);
  if (state != State::Good) SR_TRACE(2) << problem.c_str();
  if (state == State::Good || before != State::Good) return;
  SystemLog::Error(problem);
  attempts_ = 0;
  WaitForRetry();
}

}  // namespace ServiceRecords
