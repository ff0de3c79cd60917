#include "support/TestAuthority.h"

#include "support/WebServer.h"

namespace TestSupport {

const TestAuthority& TestAuthority::Shared() {
  static const TestAuthority authority;
  return authority;
}

std::filesystem::path TestAuthority::File(const std::string& name) const {
  return std::filesystem::path(SR_TEST_AUTHORITY) / name;
}

std::string TestAuthority::TlsServerBlock(const std::string& certificate,
                                          const std::string& directives) const {
  return ServerBlock("ssl", "ssl_certificate " + File(certificate + ".pem").string() +
                                ";\nssl_certificate_key " + File(certificate + ".key").string() + ";\n" +
                                directives);
}

}  // namespace TestSupport
