#pragma once

#include "libs/Wording/Message.h"

#include <string>

// A look at a server, with the agent's own way of asking.
namespace Srctl::ServerCheck {

struct Answer {
  enum class Kind {
    Trusted,       // it answers, and the system trusts its chain
    NotProtected,  // its address is http, so there is no chain
    WrongAddress,  // nothing may be sent there
    NotContacted,
    NotTrusted,
  };

  Kind kind = Kind::Trusted;
  Wording::Message text;       // what was seen, the end of a sentence about the server
  Wording::Message next = {};  // what to do about it, a sentence; empty when there is nothing to do
};

// Asks the server of this URL (UTF-8), but not one of http. Blocks, for 30 s when nobody answers.
[[nodiscard]] Answer Ask(const std::string& url);

}  // namespace Srctl::ServerCheck
