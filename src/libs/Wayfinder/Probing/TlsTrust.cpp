#include "libs/Wayfinder/Probing/TlsTrust.h"

#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>

namespace Wayfinding {
namespace {

// Trust as the agent's requests have it: a trusted certificate need not be a root.
X509_STORE* SystemStore() {
  X509_STORE* const store = X509_STORE_new();
  if (store == nullptr) return nullptr;
  X509_STORE_set_default_paths(store);
  X509_STORE_set_flags(store, X509_V_FLAG_TRUSTED_FIRST | X509_V_FLAG_PARTIAL_CHAIN);
  return store;
}

}  // namespace

void InitializeTls() {
  OPENSSL_init_ssl(0, nullptr);
}

void TlsTrust::Free(x509_store_st* store) {
  X509_STORE_free(store);
}

bool TlsTrust::Prepare(void* sslContext) {
  // Reading all authorities takes milliseconds, so it is done once, and only when a handshake begins.
  if (store_ == nullptr) store_.reset(SystemStore());
  if (store_ == nullptr) return false;
  SSL_CTX_set1_cert_store(static_cast<SSL_CTX*>(sslContext), store_.get());
  return true;
}

}  // namespace Wayfinding
