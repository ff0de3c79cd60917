#include "Application.h"

#include "AppDelegate.h"
#include "Bundle.h"
#include "MainLoop.h"
#include "StandardDirectories.h"
#include "SystemLog.h"
#include "TerminationEvent.h"
#include "libs/DomLib/XercesPlatform.h"

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

namespace {

std::vector<std::string> FilesToDeliver(int argc, char** argv) {
  std::vector<std::string> files;
  for (int i = 1; i < argc; ++i) files.push_back(std::filesystem::absolute(argv[i]).string());
  return files;
}

// The schemas are found in the current directory, the log in the user's log folder.
void PrepareFolders() {
  std::error_code error;
  std::filesystem::current_path(Bundle::Main().ResourcesPath(), error);
  if (error) SystemLog::Error("cannot change to the resources folder: " + error.message());
  const char* home = std::getenv("HOME");
  if (home == nullptr) return;
  error = StandardDirectories::CreateDirectories(std::filesystem::path(home) / "Library/Logs");
  if (error) SystemLog::Error("cannot create the folder of the log: " + error.message());
}

int RunApplication(int argc, char** argv) {
  const std::vector<std::string> files = FilesToDeliver(argc, argv);
  TerminationEvent::RaiseOnSignals();
  PrepareFolders();
  const XercesPlatform keepLibrary;  // or every document would pay for its restart
  AppDelegate delegate;
  for (const std::string& file : files) delegate.openFile(file);
  delegate.applicationDidFinishLaunching();
  const int status = MainLoop::Main().Run();
  delegate.applicationWillTerminate();
  delegate.Finish(status);
  return status;
}

}  // namespace

int ApplicationMain(int argc, char** argv) {
  try {
    return RunApplication(argc, argv);
  } catch (const std::exception& exception) {
    SystemLog::Error(std::string("cannot run: ") + exception.what());
    return EXIT_FAILURE;
  }
}
