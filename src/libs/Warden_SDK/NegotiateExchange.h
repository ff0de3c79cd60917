#pragma once

#include "libs/CredentialWire/Secret.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Warden {

// One Negotiate exchange (RFC 4559) with a server, with the tickets that the user has. The server is asked to
// authenticate itself, too, and gets no ticket to act as the user. One thread.
class NegotiateExchange {
 public:
  explicit NegotiateExchange(std::string host);
  ~NegotiateExchange();

  // The next token for the server, in Base64, in answer to the server's (empty at first). Nothing, and the
  // reason in the log, without a ticket, after the last token, or when the server's is not understood. May
  // wait for the ticket server.
  [[nodiscard]] std::optional<CredentialWire::Secret> Next(std::string_view serverToken);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace Warden
