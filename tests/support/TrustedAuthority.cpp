#include "support/TrustedAuthority.h"

#include <cstdlib>

namespace testsupport {

const TestAuthority& TrustedAuthority() {
  static const TestAuthority& authority = []() -> const TestAuthority& {
    const TestAuthority& shared = TestAuthority::Shared();
    ::setenv("SSL_CERT_FILE", shared.Root().c_str(), 1);
    return shared;
  }();
  return authority;
}

}  // namespace testsupport
