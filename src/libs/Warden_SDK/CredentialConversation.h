#pragma once

#include "libs/CredentialWire/CredentialMessage.h"
#include "libs/CredentialWire/Secret.h"
#include "libs/HelperProgram/HelperConversation.h"

#include <optional>

namespace Warden {

// One request to a running credential program and its reply. Belongs to the thread that runs it.
class CredentialConversation {
 public:
  // The descriptors are only polled; -1 for none.
  CredentialConversation(HelperProgram::HelperProcess program, CredentialWire::Secret request,
                         int cancellationDescriptor, int withdrawalDescriptor);

  // Blocks until the program has replied; a negative limit is none. Nothing when it ended, closed its output
  // or sent no message, on cancellation, and when the time is over.
  [[nodiscard]] std::optional<CredentialWire::CredentialMessage> AwaitReply(int limitMilliseconds);

 private:
  void ReadAll();

  HelperProgram::HelperConversation conversation_;
  CredentialWire::Secret request_;
  CredentialWire::Secret reply_;
};

}  // namespace Warden
