#include "fakes/FakeFactories.h"

#include "SRLib/Platform/GenericFactories.h"
#include "fakes/FakeCriticalSections.h"

#include <memory>

CGenericFactories& CGenericFactories::Instance() {
  static auto& factories = *new CGenericFactories(std::make_unique<testsupport::FakeCriticalSectionFactory>(),
                                                  std::make_unique<testsupport::FakeConfigurator>(),
                                                  std::make_unique<testsupport::FakeConfigurator>());
  return factories;
}

namespace testsupport {

FakeConfigurator& UserConfiguration() {
  return static_cast<FakeConfigurator&>(CGenericFactories::Instance().UserConfiguration());
}

FakeConfigurator& MachineConfiguration() {
  return static_cast<FakeConfigurator&>(CGenericFactories::Instance().MachineConfiguration());
}

}  // namespace testsupport
