#pragma once

#include "libs/Lifetime/UniqueHandle.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/ocsp.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

namespace Transfer {

// This folder's one place that includes OpenSSL: its objects as owning pointers.
using X509Ptr = Lifetime::UniqueHandle<X509, X509_free>;
using X509StorePtr = Lifetime::UniqueHandle<X509_STORE, X509_STORE_free>;
using GeneralNamesPtr = Lifetime::UniqueHandle<GENERAL_NAMES, GENERAL_NAMES_free>;
using OcspResponsePtr = Lifetime::UniqueHandle<OCSP_RESPONSE, OCSP_RESPONSE_free>;
using OcspAnswerPtr = Lifetime::UniqueHandle<OCSP_BASICRESP, OCSP_BASICRESP_free>;
using OcspCertificateIdPtr = Lifetime::UniqueHandle<OCSP_CERTID, OCSP_CERTID_free>;

// These two the library frees by macros.
inline void FreeChain(STACK_OF(X509) * chain) noexcept {
  sk_X509_pop_free(chain, X509_free);
}
inline void FreeOpenSslBytes(unsigned char* bytes) noexcept {
  OPENSSL_free(bytes);
}
using X509ChainPtr = Lifetime::UniqueHandle<STACK_OF(X509), FreeChain>;
using OpenSslBytesPtr = Lifetime::UniqueHandle<unsigned char, FreeOpenSslBytes>;

// A further owner of the same object.
[[nodiscard]] inline X509Ptr Retain(X509* certificate) noexcept {
  return X509Ptr(certificate != nullptr && X509_up_ref(certificate) == 1 ? certificate : nullptr);
}
[[nodiscard]] inline X509StorePtr Retain(X509_STORE* store) noexcept {
  return X509StorePtr(store != nullptr && X509_STORE_up_ref(store) == 1 ? store : nullptr);
}

}  // namespace Transfer
