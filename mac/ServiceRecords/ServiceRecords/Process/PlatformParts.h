#pragma once

#include "SRLib/Provider/ProviderParts.h"

namespace Agent {

// What this platform gives the provider: everything but the notifications, which the last step of the start
// gives. The request and validation factories must be registered.
[[nodiscard]] ServiceRecords::ProviderParts PlatformParts();

}  // namespace Agent
