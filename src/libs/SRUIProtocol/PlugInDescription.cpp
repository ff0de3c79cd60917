#include "libs/SRUIProtocol/PlugInDescription.h"

#include <system_error>
#include <utility>

namespace SRUI {

std::optional<PlugInDescription> PlugInDescription::Read(const std::filesystem::path& folder) {
  std::optional<Files::Bundle> bundle = Files::Bundle::WithPath(folder);
  if (!bundle) return std::nullopt;
  return PlugInDescription(std::move(*bundle));
}

bool PlugInDescription::NamesProtocol() const {
  return bundle_.InfoString("SRConformsToProtocol") == kProtocol;
}

std::optional<std::filesystem::path> PlugInDescription::Module() const {
  const std::filesystem::path name = bundle_.InfoString("CFBundleExecutable");
  std::error_code error;
  if (name.empty() || name != name.filename() ||
      !std::filesystem::is_regular_file(bundle_.Path() / name, error)) {
    return std::nullopt;
  }
  std::filesystem::path module = std::filesystem::absolute(bundle_.Path() / name, error);
  // An empty path would load the program itself.
  if (error) return std::nullopt;
  return module;
}

}  // namespace SRUI
