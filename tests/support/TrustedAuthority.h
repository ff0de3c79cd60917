#pragma once

#include "support/TestAuthority.h"

namespace TestSupport {

// The tests' authority. From the first use on, every transfer of the case trusts it, and nobody else.
const TestAuthority& TrustedAuthority();

}  // namespace TestSupport
