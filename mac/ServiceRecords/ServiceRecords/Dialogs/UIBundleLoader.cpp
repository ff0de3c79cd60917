#include "Dialogs/UIBundleLoader.h"

#include "libs/Lifetime/UniqueHandle.h"
#include "libs/SRUIProtocol/PlugInDescription.h"
#include "libs/Trace/SystemLog.h"

#include <dlfcn.h>

#include <cstdint>
#include <optional>
#include <utility>

namespace Agent {
namespace {

using ModulePtr = Lifetime::UniqueHandle<void, ::dlclose>;

// Of the first version on every module has all the entry points.
constexpr std::uint32_t kOldestModule = 1;

using PrincipalClassFunction = decltype(&ServiceRecordUIPrincipalClass);

// Never unmapped, even when the handle is closed, so that entry points stay good.
ModulePtr Load(const std::filesystem::path& module) {
  return ModulePtr(::dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE));
}

bool Conforms(const SRUIProtocol& entryPoints) {
  return entryPoints.version >= kOldestModule && entryPoints.addStore != nullptr &&
         entryPoints.replaceStore != nullptr && entryPoints.errorMessage != nullptr &&
         entryPoints.SRStoreDetailsViewWithDetailsDictionary != nullptr;
}

const SRUIProtocol* ConformingClass(const ModulePtr& module, const SRUIHost& host) {
  const auto principalClass =
      reinterpret_cast<PrincipalClassFunction>(::dlsym(module.get(), "ServiceRecordUIPrincipalClass"));
  const SRUIProtocol* entryPoints = principalClass != nullptr ? principalClass(&host) : nullptr;
  return entryPoints != nullptr && Conforms(*entryPoints) ? entryPoints : nullptr;
}

}  // namespace

const SRUIProtocol* UIBundleLoader::PrincipalClass(const std::string& caller) const {
  if (plugInsFolder_.empty()) {
    trace::SystemLog::Error(caller + " - Failed to create the path for the ServiceRecordUI bundle");
    return nullptr;
  }
  const std::filesystem::path path = plugInsFolder_ / SRUI::PlugInDescription::kFolderName;
  const std::optional<SRUI::PlugInDescription> description = SRUI::PlugInDescription::Read(path);
  if (!description) {
    trace::SystemLog::Error(caller + " - Could not load the bundle from " + path.string());
    return nullptr;
  }
  const std::optional<std::filesystem::path> modulePath = description->Module();
  if (!modulePath) return nullptr;

  const SRUIProtocol* entryPoints = nullptr;
  // The description decides before any code of the bundle runs.
  if (description->NamesProtocol()) {
    const ModulePtr module = Load(*modulePath);
    if (!module) return nullptr;
    entryPoints = ConformingClass(module, host_);
  }
  if (entryPoints == nullptr) {
    trace::SystemLog::Error(caller + " - " + path.string() + " does not conform to protocol");
  }
  return entryPoints;
}

}  // namespace Agent
