#pragma once

#include "libs/Warden_SDK/Credentials.h"

#include <chrono>
#include <map>

namespace Warden {

// What the user did not want to be asked. Belongs to one thread: requests that belong together run on one. In
// a thread that lives on it is forgotten after ten minutes.
class CancelledQuestions {
 public:
  [[nodiscard]] static CancelledQuestions& OfThisThread();

  void Add(const CredentialKey& key);
  [[nodiscard]] bool Holds(const CredentialKey& key);

 private:
  using Clock = std::chrono::steady_clock;

  std::map<CredentialKey, Clock::time_point> cancelled_;
};

}  // namespace Warden
