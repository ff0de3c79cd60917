#pragma once

#include "support/TemporaryFolder.h"

#include <filesystem>
#include <string>

namespace testsupport {

// A throw-away certificate authority and the server certificates that scripts/make-test-authority makes:
// good, gateway, chained, plain, international, expired, wrong-host, unknown-issuer, revoked.
class TestAuthority {
 public:
  // The one of this test program, made on first use.
  static const TestAuthority& Shared();

  // Throws std::runtime_error when the script fails.
  TestAuthority();

  // The root certificate, for SSL_CERT_FILE.
  [[nodiscard]] std::filesystem::path Root() const { return File("ca.pem"); }
  [[nodiscard]] std::filesystem::path File(const std::string& name) const { return folder_.Path() / name; }

  // A TLS server for WebServer with the named certificate, and further directives.
  [[nodiscard]] std::string TlsServerBlock(const std::string& certificate,
                                           const std::string& directives = {}) const;

 private:
  TemporaryFolder folder_;
};

}  // namespace testsupport
