#pragma once

#include "SRLib/Provider/ProviderParts.h"

#include <functional>

namespace TestSupport {

// Parts for the provider of a test program's process, which is there until the process ends, as they are.
// The configuration holds one store, "a". `published` is called for each publication.
[[nodiscard]] ServiceRecords::ProviderParts PartsOfTheProcess(std::function<void()> published);

}  // namespace TestSupport
