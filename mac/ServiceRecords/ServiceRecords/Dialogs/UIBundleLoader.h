#pragma once

#include "libs/SRUIProtocol/SRUIProtocol.h"

#include <filesystem>
#include <string>
#include <utility>

namespace Agent {

// Finds the UI plug-in "ServiceRecordUI.bundle" in a folder of plug-ins and loads its module, which stays
// loaded for the rest of the process. Any thread.
class UIBundleLoader {
 public:
  // `host` is handed to the module.
  UIBundleLoader(std::filesystem::path plugInsFolder, const SRUIHost& host)
      : plugInsFolder_(std::move(plugInsFolder)), host_(host) {}

  // The module's entry points; null when there is no bundle, it does not load, or it does not conform to
  // SRUIProtocol. Looks afresh at every call. What is wrong with the bundle goes to the system log in the
  // name of `caller`, a function's signature; a module that does not load is passed over in silence.
  [[nodiscard]] const SRUIProtocol* PrincipalClass(const std::string& caller) const;

 private:
  std::filesystem::path plugInsFolder_;
  SRUIHost host_;
};

}  // namespace Agent
