#pragma once

#include "libs/CredentialWire/CredentialMessage.h"
#include "libs/HelperProgram/HelperProcess.h"

#include <string>

// Talking to a credential program that a test has started. A failure is one of the test.
namespace TestSupport {

void SendRequest(const HelperProgram::HelperProcess& program, const std::string& text);

// Waits for the reply; an empty message when the program ends without one.
[[nodiscard]] CredentialWire::CredentialMessage ReplyOf(const HelperProgram::HelperProcess& program);

}  // namespace TestSupport
