#pragma once

#include "libs/CredentialWire/Secret.h"

#include <optional>
#include <string>

namespace Credential {

// The credentials that the user's Secret Service keeps for this system. The one place that knows libsecret.
// Never unlocks anything: that would open a window of somebody else's, or wait for one. One thread.
class CredentialStore {
 public:
  enum class State {
    Available,
    Missing,  // no service, or one without a default collection
    Locked,
    Failed
  };

  // What a credential is good for; UTF-8.
  struct Place {
    std::string protocol;
    std::string host;
    std::string realm;
  };
  struct Login {
    std::string userName;
    CredentialWire::Secret password;
  };

  // Nothing when there is none, or it cannot be had. The service counts as available only where a new one
  // could be stored, even when there is one.
  [[nodiscard]] std::optional<Login> Find(const Place& place);
  // Replaces what is kept for that place.
  [[nodiscard]] bool Store(const Place& place, const Login& login);
  // Removes what is kept for that place and user; true when there was nothing.
  [[nodiscard]] bool Erase(const Place& place, const std::string& userName);

  // How the last operation found the service, and the words for it, which may be empty.
  [[nodiscard]] State ServiceState() const { return state_; }
  [[nodiscard]] const std::string& Reason() const { return reason_; }

 private:
  bool Note(State state, std::string reason);

  State state_ = State::Available;
  std::string reason_;
};

}  // namespace Credential
