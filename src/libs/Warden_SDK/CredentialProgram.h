#pragma once

#include "libs/Warden_SDK/Credentials.h"

#include <filesystem>
#include <optional>
#include <string_view>

namespace CredentialWire {
class CredentialMessage;
}

namespace Warden {

class Cancellation;

enum class CredentialOutcome {
  Given,
  Cancelled,    // by the user
  Interrupted,  // by Cancellation, or because nobody wants the answer any more
  NobodyToAsk,  // neither a desktop nor a terminal
  Failed        // the program cannot be started or does not keep to its convention
};

// Runs the credential program, once for each call. Any thread. What went wrong, a missing or locked Secret
// Service too, is in the log.
class CredentialProgram {
 public:
  // `cancellation` must outlive the object.
  CredentialProgram(std::filesystem::path program, const Cancellation& cancellation);

  // Blocks while the user is asked. `credentials` is set when they were given.
  [[nodiscard]] CredentialOutcome Get(const CredentialQuestion& question, Credentials& credentials) const;

  // At most ten seconds each.
  void Store(const CredentialKey& key, const Credentials& credentials) const;
  void Erase(const CredentialKey& key, const Credentials& credentials) const;

 private:
  [[nodiscard]] CredentialOutcome Ask(const CredentialWire::CredentialMessage& request,
                                      const QuestionPlace& place, Credentials& credentials) const;
  [[nodiscard]] std::optional<CredentialWire::CredentialMessage> ReplyTo(
      const CredentialWire::CredentialMessage& request, const QuestionPlace& place) const;
  [[nodiscard]] std::optional<CredentialWire::CredentialMessage> Exchange(
      std::string_view action, const CredentialWire::CredentialMessage& request, int limitMilliseconds,
      const QuestionPlace& place = {}) const;
  [[nodiscard]] bool IsInterrupted(const QuestionPlace& place) const;
  void Change(std::string_view action, const CredentialKey& key, const Credentials& credentials) const;

  std::filesystem::path program_;
  const Cancellation& cancellation_;
};

}  // namespace Warden
