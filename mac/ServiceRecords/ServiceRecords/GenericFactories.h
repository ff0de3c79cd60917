#pragma once

#include "SRLib/Platform/Configurator.h"
#include "SRLib/Platform/GenericCS.h"

#include <memory>
#include <utility>

// What the platform supplies to the core, in order: critical sections, the user's configuration and the
// machine's.
class CGenericFactories {
 public:
  CGenericFactories(std::unique_ptr<CGenericCSFactory> criticalSections,
                    std::unique_ptr<Config::Configurator> userConfiguration,
                    std::unique_ptr<Config::Configurator> machineConfiguration)
      : criticalSections_(std::move(criticalSections)),
        userConfiguration_(std::move(userConfiguration)),
        machineConfiguration_(std::move(machineConfiguration)) {}

  // Made on first use, never destroyed.
  static CGenericFactories& Instance();

  [[nodiscard]] CGenericCSFactory& CriticalSections() { return *criticalSections_; }
  [[nodiscard]] Config::Configurator& UserConfiguration() { return *userConfiguration_; }
  [[nodiscard]] Config::Configurator& MachineConfiguration() { return *machineConfiguration_; }

 private:
  std::unique_ptr<CGenericCSFactory> criticalSections_;
  std::unique_ptr<Config::Configurator> userConfiguration_;
  std::unique_ptr<Config::Configurator> machineConfiguration_;
};
