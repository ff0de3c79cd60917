#pragma once

#include "libs/Files/Bundle.h"

#include <filesystem>
#include <optional>

namespace SRUI {

// The plug-in of the dialogs as its folder describes it: by this it is accepted, before any code of it runs.
// Immutable; any thread.
class PlugInDescription {
 public:
  // The plug-in's folder in a folder of plug-ins.
  static constexpr char kFolderName[] = "ServiceRecordUI.bundle";
  static constexpr char kProtocol[] = "SRUIProtocol";

  // Nothing when the folder has no description that can be read.
  [[nodiscard]] static std::optional<PlugInDescription> Read(const std::filesystem::path& folder);

  // Whether it says that it conforms to the protocol.
  [[nodiscard]] bool NamesProtocol() const;

  // The absolute path of its module; nothing when it has none, or names one outside its own folder. Looks
  // afresh.
  [[nodiscard]] std::optional<std::filesystem::path> Module() const;

 private:
  explicit PlugInDescription(Files::Bundle bundle) : bundle_(std::move(bundle)) {}

  Files::Bundle bundle_;
};

}  // namespace SRUI
