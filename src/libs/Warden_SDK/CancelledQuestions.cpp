#include "libs/Warden_SDK/CancelledQuestions.h"

namespace Warden {
namespace {

constexpr std::chrono::minutes kKept{10};

}  // namespace

CancelledQuestions& CancelledQuestions::OfThisThread() {
  thread_local CancelledQuestions questions;
  return questions;
}

void CancelledQuestions::Add(const CredentialKey& key) {
  cancelled_[key] = Clock::now();
}

bool CancelledQuestions::Holds(const CredentialKey& key) {
  const Clock::time_point now = Clock::now();
  std::erase_if(cancelled_, [now](const auto& entry) { return now - entry.second >= kKept; });
  return cancelled_.contains(key);
}

}  // namespace Warden
