#pragma once

#include "SRLib/Platform/Configurator.h"
#include "libs/PropertyList/PropertyList.h"

#include <functional>
#include <memory>
#include <string>

namespace Config {

// Where a configuration's tree is stored. Any thread. Who loads waits for nobody who replaces.
class ConfigurationStorage {
 public:
  using Tree = std::shared_ptr<const PropertyList::Dictionary>;
  // Makes its changes to a tree; false when that need not be stored.
  using Change = std::function<bool(PropertyList::Dictionary& root)>;

  virtual ~ConfigurationStorage() = default;

  // What is stored now, never null; an empty tree when it cannot be read, which is counted.
  [[nodiscard]] virtual Tree Load() = 0;
  // Has what is stored by then changed, and stores the result. One change at a time. That it could not be
  // stored is logged and counted.
  virtual void Replace(const Change& change) = 0;
  // Logs that the key, which has so many components, names nothing: it is too deep or no text.
  virtual void Refuse(std::size_t components) = 0;

  [[nodiscard]] virtual StorageFailures Failures() const = 0;
};

}  // namespace Config
