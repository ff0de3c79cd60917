#pragma once

#include "fakes/FakeConfigurator.h"

namespace testsupport {

// The two configurations behind CGenericFactories::Instance(), for the life of the process.
[[nodiscard]] FakeConfigurator& UserConfiguration();
[[nodiscard]] FakeConfigurator& MachineConfiguration();

}  // namespace testsupport
