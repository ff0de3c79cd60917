#include "libs/Wayfinder/Probing/TlsTrust.h"

#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>

namespace Wayfinding {
namespace {

int MarkIndex() {
  static const int index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
  return index;
}

void Observe(const SSL* session, int where, int /*value*/) noexcept {
  if (where != SSL_CB_HANDSHAKE_DONE) return;
  auto* const mark = static_cast<bool*>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(session), MarkIndex()));
  if (mark != nullptr) *mark = true;
}

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

TlsTrust::TlsTrust() = default;
TlsTrust::~TlsTrust() = default;

void TlsTrust::Free(x509_store_st* store) {
  X509_STORE_free(store);
}

bool TlsTrust::Prepare(void* sslContext, bool& handshakeMark) {
  // Reading all authorities takes milliseconds, so it is done once, and only when a handshake begins.
  if (store_ == nullptr) store_.reset(SystemStore());
  if (store_ == nullptr) return false;
  auto* const context = static_cast<SSL_CTX*>(sslContext);
  SSL_CTX_set1_cert_store(context, store_.get());
  SSL_CTX_set_info_callback(context, Observe);
  return SSL_CTX_set_ex_data(context, MarkIndex(), &handshakeMark) == 1;
}

}  // namespace Wayfinding
