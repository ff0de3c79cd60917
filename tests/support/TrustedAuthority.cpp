#include "support/TrustedAuthority.h"

#include <cstdlib>

namespace TestSupport {

const TestAuthority& TrustedAuthority() {
  const TestAuthority& authority = TestAuthority::Shared();
  ::setenv("SSL_CERT_FILE", authority.Root().c_str(), 1);
  return authority;
}

}  // namespace TestSupport
