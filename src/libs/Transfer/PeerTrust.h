#pragma once

#include "libs/Transfer/OpenSslHandles.h"
#include "libs/Transfer/PeerProblem.h"

#include <vector>

namespace Transfer {

// The trust in a stream's peer: what the handshake verified, and the evaluation of it afterwards. One thread.
class PeerTrust {
 public:
  PeerTrust() = default;
  PeerTrust(const PeerTrust&) = delete;
  PeerTrust& operator=(const PeerTrust&) = delete;

  // Starts over with the sessions of this context, which must not outlive this object. Has them ask the peer
  // for a stapled revocation answer.
  void Watch(SSL_CTX* context);

  // Whether the peer ended the session with a fatal alert.
  [[nodiscard]] bool ReceivedFatalAlert() const { return receivedFatalAlert_; }
  // The verified chain, the peer's certificate first, the root last; borrowed, null before a handshake
  // verified one.
  [[nodiscard]] const STACK_OF(X509) * Chain() const { return chain_.get(); }

  // False when there is no chain, or the stapled answer is genuine and says that the peer's certificate is
  // revoked.
  [[nodiscard]] bool Evaluate() const;

  // Why the peer is not trusted. `isVerified`: the transfer has found nothing wrong with it.
  [[nodiscard]] PeerProblem Problem(bool isVerified) const;

 private:
  // Null for a session that says nothing about the peer.
  [[nodiscard]] static PeerTrust* Of(const SSL* session);
  static void Observe(const SSL* session, int where, int value) noexcept;
  static int TakeVerification(int isGood, X509_STORE_CTX* verification) noexcept;
  void TakeAlert(int where, int value);
  void TakeHandshake(SSL* session);
  [[nodiscard]] bool IsRevoked() const;

  const SSL_CTX* context_ = nullptr;
  X509ChainPtr chain_;
  X509StorePtr store_;
  std::vector<unsigned char> stapledAnswer_;  // DER; empty when the peer sent none
  bool receivedFatalAlert_ = false;
  bool sawCertificate_ = false;
  PeerProblem problem_;  // that ended the handshake
};

}  // namespace Transfer
