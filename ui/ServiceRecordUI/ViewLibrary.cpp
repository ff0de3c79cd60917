#include "ViewLibrary.h"

#include "BesideModule.h"

#include <dlfcn.h>

namespace Dialogs::ViewLibrary {
namespace {

using Function = void* (*)(const char*);

// Stays loaded: what it has registered with the toolkit cannot be taken back.
Function Load() {
  const std::optional<std::filesystem::path> path = BesideModule("ServiceRecordUIView.so");
  void* const library = path ? ::dlopen(path->c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE) : nullptr;
  return library != nullptr ? reinterpret_cast<Function>(::dlsym(library, "ServiceRecordUIStoreDetailsView"))
                            : nullptr;
}

}  // namespace

void* MakeView(const char* details) noexcept {
  try {
    static const Function function = Load();
    return function != nullptr ? function(details) : nullptr;
  } catch (...) {
    return nullptr;
  }
}

}  // namespace Dialogs::ViewLibrary
