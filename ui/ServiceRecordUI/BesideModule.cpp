#include "BesideModule.h"

#include "libs/SRUIProtocol/SRUIProtocol.h"

#include <dlfcn.h>

namespace Dialogs {

std::optional<std::filesystem::path> BesideModule(const char* name) {
  Dl_info module{};
  if (::dladdr(reinterpret_cast<const void*>(&ServiceRecordUIPrincipalClass), &module) == 0)
    return std::nullopt;
  return std::filesystem::path(module.dli_fname).parent_path() / name;
}

}  // namespace Dialogs
