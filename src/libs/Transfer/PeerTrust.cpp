#include "libs/Transfer/PeerTrust.h"

namespace Transfer {
namespace {

int OwnerIndex() {
  static const int index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
  return index;
}

bool IsFatal(int alert) {
  return (alert >> 8) == SSL3_AL_FATAL;
}

// Answers name a certificate by digests of their own choice.
bool Concerns(const OCSP_CERTID* id, const X509* certificate, const X509* issuer) {
  ASN1_OBJECT* algorithm = nullptr;
  OCSP_id_get0_info(nullptr, &algorithm, nullptr, nullptr, const_cast<OCSP_CERTID*>(id));
  const EVP_MD* const digest = EVP_get_digestbyobj(algorithm);
  if (digest == nullptr) return false;
  const OcspCertificateIdPtr own(OCSP_cert_to_id(digest, certificate, issuer));
  return own != nullptr && OCSP_id_cmp(own.get(), id) == 0;
}

// The answer's period of validity is left aside: what was revoked stays revoked.
bool SaysRevoked(OCSP_BASICRESP* answer, const X509* certificate, const X509* issuer) {
  for (int i = 0; i < OCSP_resp_count(answer); ++i) {
    OCSP_SINGLERESP* const single = OCSP_resp_get0(answer, i);
    if (!Concerns(OCSP_SINGLERESP_get0_id(single), certificate, issuer)) continue;
    if (OCSP_single_get0_status(single, nullptr, nullptr, nullptr, nullptr) == V_OCSP_CERTSTATUS_REVOKED)
      return true;
  }
  return false;
}

}  // namespace

void PeerTrust::Watch(SSL_CTX* context) {
  context_ = context;
  chain_.reset();
  store_.reset();
  stapledAnswer_.clear();
  receivedFatalAlert_ = false;
  SSL_CTX_set_ex_data(context, OwnerIndex(), this);
  SSL_CTX_set_info_callback(context, Observe);
  SSL_CTX_set_tlsext_status_type(context, TLSEXT_STATUSTYPE_ocsp);
}

void PeerTrust::Observe(const SSL* session, int where, int value) noexcept {
  SSL_CTX* const context = SSL_get_SSL_CTX(session);
  auto* const trust = static_cast<PeerTrust*>(SSL_CTX_get_ex_data(context, OwnerIndex()));
  // A proxy's session has a context of its own and says nothing about the server behind it.
  if (trust == nullptr || trust->context_ != context) return;
  if (where == SSL_CB_READ_ALERT && IsFatal(value)) trust->receivedFatalAlert_ = true;
  if (where != SSL_CB_HANDSHAKE_DONE) return;
  try {
    trust->TakeHandshake(const_cast<SSL*>(session));
  } catch (...) {
    trust->chain_.reset();
  }
}

void PeerTrust::TakeHandshake(SSL* session) {
  const unsigned char* answer = nullptr;
  const long length = SSL_get_tlsext_status_ocsp_resp(session, &answer);
  if (answer != nullptr && length > 0) stapledAnswer_.assign(answer, answer + length);
  store_ = Retain(SSL_CTX_get_cert_store(context_));
  STACK_OF(X509)* const verified = SSL_get0_verified_chain(session);
  if (verified != nullptr) chain_.reset(X509_chain_up_ref(verified));
}

bool PeerTrust::Evaluate() const {
  if (sk_X509_num(chain_.get()) <= 0) return false;
  const bool revoked = IsRevoked();
  ERR_clear_error();
  return !revoked;
}

bool PeerTrust::IsRevoked() const {
  const unsigned char* bytes = stapledAnswer_.data();
  const OcspResponsePtr response(
      d2i_OCSP_RESPONSE(nullptr, &bytes, static_cast<long>(stapledAnswer_.size())));
  if (!response) return false;
  const OcspAnswerPtr answer(OCSP_response_get1_basic(response.get()));
  if (!answer || OCSP_basic_verify(answer.get(), chain_.get(), store_.get(), 0) != 1) return false;
  const X509* const certificate = sk_X509_value(chain_.get(), 0);
  const bool hasIssuer = sk_X509_num(chain_.get()) > 1;
  return SaysRevoked(answer.get(), certificate, hasIssuer ? sk_X509_value(chain_.get(), 1) : certificate);
}

}  // namespace Transfer
