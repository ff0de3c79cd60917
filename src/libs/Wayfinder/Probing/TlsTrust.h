#pragma once

#include "libs/Lifetime/UniqueHandle.h"

#include <deque>

struct x509_store_st;

namespace Wayfinding {

// The TLS library cleans up at the exit of the process, after whatever was made later than this call has
// gone. Any thread.
void InitializeTls();

// Whom a round's TLS handshakes trust: the system's authorities, read anew for each round, or those that
// SSL_CERT_FILE and SSL_CERT_DIR name. Outlives the connections that it prepared. One thread.
class TlsTrust {
 public:
  TlsTrust();
  ~TlsTrust();
  TlsTrust(const TlsTrust&) = delete;
  TlsTrust& operator=(const TlsTrust&) = delete;

  // A mark that becomes true when a handshake is done, and so its chain verified, whatever its name.
  [[nodiscard]] bool& NewHandshakeMark() { return marks_.emplace_back(false); }

  // Sets up an SSL_CTX for one connection; false when it cannot verify anything.
  [[nodiscard]] bool Prepare(void* sslContext, bool& handshakeMark);

 private:
  static void Free(x509_store_st* store);

  UniqueHandle<x509_store_st, Free> store_;
  // A connection that is being shut down may still tell of a handshake, after the one who asked is gone.
  std::deque<bool> marks_;
};

}  // namespace Wayfinding
