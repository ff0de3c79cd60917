#pragma once

#include <string>

namespace Transfer {

// Why a server cannot be verified, as far as its certificate or its handshake tells.
struct PeerProblem {
  enum class Kind {
    None,  // none that is known
    Expired,
    NotYetValid,
    IssuerExpired,  // another certificate of its chain, as the next
    IssuerNotYetValid,
    OtherHost,
    UnknownIssuer,
    Revoked,
    NoCommonProtocol,
  };

  Kind kind = Kind::None;
  // The date since which, or until which ("2026-11-22 13:05 UTC"), the hosts that the certificate names, or
  // who has issued it; otherwise, and where it names none, empty. UTF-8, and for the last two whatever the
  // certificate says.
  std::string subject = {};
};

}  // namespace Transfer
