#include "SRLib/Provider/SavedStores.h"

#include "SRLib/Platform/Configurator.h"
#include "SRLib/Provider/ProviderTrace.h"
#include "SRLib/SRRegistryConfig.h"
#include "libs/RetryDelay/RetryDelay.h"
#include "libs/Trace/SystemLog.h"

#include <exception>
#include <utility>

namespace ServiceRecords {
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
  delay_ = util::RetryDelay(attempts_++);
  if (startTimer_) startTimer_(delay_);
}

SavedStores::Reading SavedStores::Read() const {
  const std::uint64_t failuresBefore = configuration_.Failures().reads;
  StoreMap stores = SRRegistryConfig(configuration_).RestoreStores();
  const Config::StorageFailures failures = configuration_.Failures();
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

std::optional<std::string> SavedStores::TrySave(StoreMap& stores) const {
  try {
    const std::uint64_t failuresBefore = configuration_.Failures().writes;
    SRRegistryConfig(configuration_).SaveStores(stores);
    Config::StorageFailures failures = configuration_.Failures();
    if (failures.writes == failuresBefore) return std::nullopt;
    return std::move(failures.latest);
  } catch (const std::exception& exception) {
    return exception.what();
  }
}

void SavedStores::TakeResult(State state, const std::string& problem) {
  const State before = state_.exchange(state);
  if (state != State::Good) SR_PROVIDER_TRACE(2) << problem.c_str();
  if (state == State::Good || before != State::Good) return;
  trace::SystemLog::Error(problem);
  attempts_ = 0;
  WaitForRetry();
}

}  // namespace ServiceRecords
