#pragma once

#include "support/TestAuthority.h"

namespace testsupport {

// The test program's authority. From the first use on, every transfer of the program trusts it, and nobody
// else.
const TestAuthority& TrustedAuthority();

}  // namespace testsupport
