#pragma once

#include "libs/CredentialWire/Secret.h"

#include <optional>
#include <string>
#include <string_view>

namespace Terminal {
class Terminal;
}

namespace Credential {

// What the user is asked to log on with. The texts come from a server and are made fit for the terminal; all
// but the server, which is shown whole, are cut when they are long.
struct LogOnQuestion {
  std::string_view server;  // protocol://host
  std::string_view realm;
  std::string_view storeName;    // whose discovery document it is about; may be empty
  std::string_view gatewayName;  // may be empty
  bool isGateway = false;
  bool wasRejected = false;  // the last answer was not accepted
  bool needsCode = false;
  bool canRemember = false;
  std::string_view knownUserName;     // not empty: only the code is asked for
  std::string_view rejectedUserName;  // of the last answer: offered for this one; may be empty
};

struct LogOn {
  std::string userName;             // as known, where it was known
  CredentialWire::Secret password;  // empty where the user name was known
  CredentialWire::Secret code;
  bool remember = false;
};

// What became of a question, wherever it was asked.
struct LogOnReply {
  enum class Outcome { Answered, Cancelled, NoDisplay, Failed };
  Outcome outcome = Outcome::Failed;
  LogOn logOn;  // when answered
};

// Asks on the terminal, which has taken its turn. Nothing when the user cancels: an empty code, an empty user
// name where none is offered, or the end of the input.
[[nodiscard]] std::optional<LogOn> AskToLogOn(Terminal::Terminal& terminal, const LogOnQuestion& question);

}  // namespace Credential
