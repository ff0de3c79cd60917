#include "Application.h"

#include "AppDelegate.h"
#include "Bundle.h"
#include "DistributedNotificationCenter.h"
#include "MainLoop.h"
#include "SRLib/SystemLog.h"
#include "StandardDirectories.h"
#include "TerminationEvent.h"
#include "libs/DomLib/XercesPlatform.h"

#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace {

// The agent has no options; a file comes with an absolute path.
std::vector<std::string> FilesToDeliver(int argc, char** argv) {
  std::vector<std::string> files;
  for (const std::string argument : std::span(argv, static_cast<std::size_t>(argc)).subspan(1)) {
    if (!argument.empty() && argument.front() != '-')
      files.push_back(std::filesystem::absolute(argument).string());
  }
  return files;
}

// The schemas are found in the current directory, the log in the user's log folder.
void PrepareFolders() {
  std::error_code error;
  std::filesystem::current_path(Bundle::Main().ResourcesPath(), error);
  if (error) SystemLog::Error("cannot change to the resources folder: " + error.message());
  const auto logs = StandardDirectories::Logs();
  if (!logs) return;
  error = StandardDirectories::CreateDirectories(*logs);
  if (error) SystemLog::Error("cannot create the folder of the log: " + error.message());
}

int RunApplication(int argc, char** argv) {
  const std::vector<std::string> files = FilesToDeliver(argc, argv);
  TerminationEvent::RaiseOnSignals();
  std::signal(SIGPIPE, SIG_IGN);  // a peer that hangs up is an error of the write
  PrepareFolders();
  // Made on this thread, and before any thread that posts to them, so that they outlive it at an early exit.
  MainLoop::Main();
  DistributedNotificationCenter::defaultCenter();
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
  } catch (...) {
    SystemLog::Error("cannot run: the XML library does not start");
  }
  return EXIT_FAILURE;
}
