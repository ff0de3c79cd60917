#include "support/TestAuthority.h"

#include "support/ChildProcess.h"
#include "support/WebServer.h"

namespace testsupport {

const TestAuthority& TestAuthority::Shared() {
  static const TestAuthority authority;
  return authority;
}

TestAuthority::TestAuthority() {
  ChildProcess script({SR_SOURCE_DIR "/scripts/make-test-authority", folder_.Path()}, {},
                      {.captureErrors = true});
  if (script.Wait() != 0) throw std::runtime_error("no test authority: " + script.Output());
}

std::string TestAuthority::TlsServerBlock(const std::string& certificate,
                                          const std::string& directives) const {
  return ServerBlock("ssl", "ssl_certificate " + File(certificate + ".pem").string() +
                                ";\nssl_certificate_key " + File(certificate + ".key").string() + ";\n" +
                                directives);
}

}  // namespace testsupport
