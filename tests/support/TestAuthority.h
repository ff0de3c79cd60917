#pragma once

#include <filesystem>
#include <string>

namespace TestSupport {

// A throw-away certificate authority and the server certificates that scripts/make-test-authority makes:
// good, gateway, chained, expired-issuer, future-issuer, plain, international, expired, not-yet-valid,
// wrong-host, address-alone, no-host, unknown-issuer, nameless-issuer, two-line-issuer, revoked. The build
// makes it, and all programs of a build folder share it: nobody writes there.
class TestAuthority {
 public:
  static const TestAuthority& Shared();

  // The root certificate, for SSL_CERT_FILE.
  [[nodiscard]] std::filesystem::path Root() const { return File("ca.pem"); }
  [[nodiscard]] std::filesystem::path File(const std::string& name) const;

  // A TLS server for WebServer with the named certificate, and further directives.
  [[nodiscard]] std::string TlsServerBlock(const std::string& certificate,
                                           const std::string& directives = {}) const;

 private:
  TestAuthority() = default;
};

}  // namespace TestSupport
