#pragma once

#include "libs/CredentialWire/CredentialMessage.h"

#include <string_view>

namespace Credential {

// The reply to a request. `action` is "get", "store" or "erase"; anything else, and a request that lacks
// something, is a bad request. `interruption` ends a question to the user when it becomes readable.
[[nodiscard]] CredentialWire::CredentialMessage AnswerTo(std::string_view action,
                                                         const CredentialWire::CredentialMessage& request,
                                                         int interruption);

}  // namespace Credential
