#pragma once

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/ocsp.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>

// This folder's one place that includes OpenSSL: its objects as owning pointers.
struct OpenSslDeleter {
  void operator()(X509* certificate) const noexcept { X509_free(certificate); }
  void operator()(X509_STORE* store) const noexcept { X509_STORE_free(store); }
  void operator()(STACK_OF(X509) * chain) const noexcept { sk_X509_pop_free(chain, X509_free); }
  void operator()(GENERAL_NAMES* names) const noexcept { GENERAL_NAMES_free(names); }
  void operator()(OCSP_RESPONSE* response) const noexcept { OCSP_RESPONSE_free(response); }
  void operator()(OCSP_BASICRESP* answer) const noexcept { OCSP_BASICRESP_free(answer); }
  void operator()(OCSP_CERTID* id) const noexcept { OCSP_CERTID_free(id); }
  void operator()(unsigned char* bytes) const noexcept { OPENSSL_free(bytes); }
};

using X509Ptr = std::unique_ptr<X509, OpenSslDeleter>;
using X509StorePtr = std::unique_ptr<X509_STORE, OpenSslDeleter>;
using X509ChainPtr = std::unique_ptr<STACK_OF(X509), OpenSslDeleter>;
using GeneralNamesPtr = std::unique_ptr<GENERAL_NAMES, OpenSslDeleter>;
using OcspResponsePtr = std::unique_ptr<OCSP_RESPONSE, OpenSslDeleter>;
using OcspAnswerPtr = std::unique_ptr<OCSP_BASICRESP, OpenSslDeleter>;
using OcspCertificateIdPtr = std::unique_ptr<OCSP_CERTID, OpenSslDeleter>;
using OpenSslBytesPtr = std::unique_ptr<unsigned char, OpenSslDeleter>;

// A further owner of the same object.
[[nodiscard]] inline X509Ptr Retain(X509* certificate) noexcept {
  return X509Ptr(certificate != nullptr && X509_up_ref(certificate) == 1 ? certificate : nullptr);
}
[[nodiscard]] inline X509StorePtr Retain(X509_STORE* store) noexcept {
  return X509StorePtr(store != nullptr && X509_STORE_up_ref(store) == 1 ? store : nullptr);
}
