#pragma once

#include "SRLib/Provider/ProviderParts.h"

#include <string>
#include <system_error>

namespace Agent {

// What this platform gives the provider. The start adds how changes are announced, and as its last step the
// notifications. The request and validation factories must be registered.
[[nodiscard]] ServiceRecords::ProviderParts PlatformParts();

// A sentence for people: why a document's file could not be read.
[[nodiscard]] std::wstring WhyUnread(const std::error_code& error);

}  // namespace Agent
