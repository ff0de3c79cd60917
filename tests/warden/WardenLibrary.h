#pragma once

#include "libs/Warden_SDK/MorvaneWarden.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace TestSupport {

// A copy of the shared library in a folder of its own, with a credential program beside it, loaded as a
// program loads it. Log lines are kept. One at a time.
class WardenLibrary {
 public:
  // Copies the credential program that is installed with the library.
  WardenLibrary();
  // Uses this text as the program.
  explicit WardenLibrary(const std::string& script);
  ~WardenLibrary();
  WardenLibrary(const WardenLibrary&) = delete;
  WardenLibrary& operator=(const WardenLibrary&) = delete;

  [[nodiscard]] const std::filesystem::path& Folder() const { return folder_.Path(); }
  // The log lines so far.
  [[nodiscard]] std::vector<std::string> Log() const;

  // The library's functions under their names.
  decltype(&MorvaneWarden_SetLogFunction) SetLogFunction = nullptr;
  decltype(&MorvaneWarden_SetWaitFunction) SetWaitFunction = nullptr;
  decltype(&MorvaneWarden_Initialize) Initialize = nullptr;
  decltype(&MorvaneWarden_Uninitialize) Uninitialize = nullptr;
  decltype(&MorvaneWarden_CancelRequests) CancelRequests = nullptr;
  decltype(&MorvaneWarden_CreateConnection) CreateConnection = nullptr;
  decltype(&MorvaneWarden_DestroyConnection) DestroyConnection = nullptr;
  decltype(&MorvaneWarden_CreateRequestContext) CreateRequestContext = nullptr;
  decltype(&MorvaneWarden_DestroyContext) DestroyContext = nullptr;
  decltype(&MorvaneWarden_ForceRoute) ForceRoute = nullptr;
  decltype(&MorvaneWarden_SetQuestions) SetQuestions = nullptr;
  decltype(&MorvaneWarden_Prepare2) Prepare2 = nullptr;
  decltype(&MorvaneWarden_GetTranslatedUrl) GetTranslatedUrl = nullptr;
  decltype(&MorvaneWarden_FreeTranslatedUrl) FreeTranslatedUrl = nullptr;
  decltype(&MorvaneWarden_GetHeaders) GetHeaders = nullptr;
  decltype(&MorvaneWarden_FreeHeaders) FreeHeaders = nullptr;
  decltype(&MorvaneWarden_SetAnsweringUrl) SetAnsweringUrl = nullptr;
  decltype(&MorvaneWarden_ReportHttpResponse) ReportHttpResponse = nullptr;

 private:
  void Load();

  TemporaryFolder folder_;
  void* handle_ = nullptr;
};

}  // namespace TestSupport
