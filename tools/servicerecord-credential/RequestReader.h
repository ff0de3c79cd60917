#pragma once

#include "libs/CredentialWire/CredentialMessage.h"

#include <optional>

namespace Credential {

// Blocks until a whole message has come in, or the interruption. Nothing when the input ends before, or holds
// no message.
[[nodiscard]] std::optional<CredentialWire::CredentialMessage> ReadRequest(int input, int interruption);

}  // namespace Credential
