#include "warden/WardenLibrary.h"

#include "libs/Text/TextHelpers.h"

#include <dlfcn.h>

#include <fstream>
#include <mutex>
#include <stdexcept>

namespace TestSupport {
namespace {

namespace fs = std::filesystem;

std::mutex g_logMutex;
std::vector<std::string> g_log;

void KeepLine(int level, const wchar_t* message) {
  const std::lock_guard lock(g_logMutex);
  g_log.push_back(std::to_string(level) + " " + util::narrow(message));
}

template <typename Function>
void Find(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(::dlsym(library, (std::string("MorvaneWarden_") + name).c_str()));
  if (function == nullptr) throw std::runtime_error(::dlerror());
}

}  // namespace

WardenLibrary::WardenLibrary() {
  fs::copy_file(SR_CREDENTIAL_PROGRAM, Folder() / "servicerecord-credential");
  Load();
}

WardenLibrary::WardenLibrary(const std::string& script) {
  const fs::path program = Folder() / "servicerecord-credential";
  std::ofstream(program) << script;
  fs::permissions(program, fs::perms::owner_all);
  Load();
}

WardenLibrary::~WardenLibrary() {
  SetLogFunction(nullptr);
  SetWaitFunction(nullptr);
  ::dlclose(handle_);
}

void WardenLibrary::Load() {
  const fs::path library = Folder() / "libWarden_SDK.so";
  fs::copy_file(SR_WARDEN_LIBRARY, library);
  handle_ = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr) throw std::runtime_error(::dlerror());
  Find(handle_, "SetLogFunction", SetLogFunction);
  Find(handle_, "SetWaitFunction", SetWaitFunction);
  Find(handle_, "Initialize", Initialize);
  Find(handle_, "Uninitialize", Uninitialize);
  Find(handle_, "CancelRequests", CancelRequests);
  Find(handle_, "CreateConnection", CreateConnection);
  Find(handle_, "DestroyConnection", DestroyConnection);
  Find(handle_, "CreateRequestContext", CreateRequestContext);
  Find(handle_, "DestroyContext", DestroyContext);
  Find(handle_, "ForceRoute", ForceRoute);
  Find(handle_, "SetQuestions", SetQuestions);
  Find(handle_, "Prepare2", Prepare2);
  Find(handle_, "GetTranslatedUrl", GetTranslatedUrl);
  Find(handle_, "FreeTranslatedUrl", FreeTranslatedUrl);
  Find(handle_, "GetHeaders", GetHeaders);
  Find(handle_, "FreeHeaders", FreeHeaders);
  Find(handle_, "SetAnsweringUrl", SetAnsweringUrl);
  Find(handle_, "ReportHttpResponse", ReportHttpResponse);
  const std::lock_guard lock(g_logMutex);
  g_log.clear();
  SetLogFunction(KeepLine);
}

std::vector<std::string> WardenLibrary::Log() const {
  const std::lock_guard lock(g_logMutex);
  return g_log;
}

}  // namespace TestSupport
