#pragma once

#include "libs/Lifetime/UniqueHandle.h"

struct x509_store_st;

namespace Wayfinding {

// The TLS library cleans up at the exit of the process, after whatever was made later than this call has
// gone. Any thread.
void InitializeTls();

// Whom a round's TLS handshakes trust: the system's authorities, read anew for each round, or those that
// SSL_CERT_FILE and SSL_CERT_DIR name. One thread.
class TlsTrust {
 public:
  // Sets up an SSL_CTX for one connection; false when it cannot verify anything.
  [[nodiscard]] bool Prepare(void* sslContext);

 private:
  static void Free(x509_store_st* store);

  Lifetime::UniqueHandle<x509_store_st, Free> store_;
};

}  // namespace Wayfinding
