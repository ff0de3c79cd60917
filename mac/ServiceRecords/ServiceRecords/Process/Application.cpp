#include "Process/Application.h"

#include "AppDelegate.h"
#include "Bus/DistributedNotificationCenter.h"
#include "Process/LaunchArguments.h"
#include "Process/MainLoop.h"
#include "Process/TerminationWatch.h"
#include "SRLib/SRProvider.h"
#include "libs/DomLib/XercesPlatform.h"
#include "libs/Files/Bundle.h"
#include "libs/Files/FileDescriptor.h"
#include "libs/Termination/TerminationEvent.h"
#include "libs/Trace/SystemLog.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace Agent {
namespace {

constexpr std::chrono::seconds kTimeToEnd{5};

// Between two saves, so that the list in the file is whole.
void EndAtOnce() {
  ServiceRecords::SRProvider::WhileNotSaving([] { ::_exit(EXIT_SUCCESS); });
}

// Without them, their numbers would go to files of the agent, and what is meant for standard error into
// those.
void OpenStandardDescriptors() {
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(standard, F_GETFD) >= 0) continue;
    static_cast<void>(::open("/dev/null", O_RDWR));  // has that number, the lowest that is free
  }
}

// Libraries end the process when they are short of descriptors, so the start alone needs some.
void CheckDescriptors() {
  constexpr int kNeeded = 32;
  std::vector<Files::FileDescriptor> free;
  for (int i = 0; i < kNeeded; ++i) {
    free.emplace_back(::fcntl(Termination::Descriptor(), F_DUPFD_CLOEXEC, 0));
    if (!free.back()) throw std::runtime_error("too many open files, or too few allowed");
  }
}

// The schemas are found in the current directory.
void EnterResourcesFolder() {
  std::error_code error;
  std::filesystem::current_path(Files::Bundle::Main().ResourcesPath(), error);
  if (error) trace::SystemLog::Error("cannot change to the resources folder: " + error.message());
}

int RunApplication(int argc, char** argv) {
  OpenStandardDescriptors();
  Termination::RaiseOnSignals();
  const LaunchArguments arguments = LaunchArguments::Read(argc, argv);
  if (arguments.exitStatus) return *arguments.exitStatus;
  CheckDescriptors();
  TerminationWatch::Start(kTimeToEnd, EndAtOnce);
  std::signal(SIGPIPE, SIG_IGN);     // a peer that hangs up is an error of the write
  std::signal(SIGXFSZ, [](int) {});  // so is a limit on files; not ignored, or programs would inherit that
  EnterResourcesFolder();
  // Made on this thread, and before any thread that posts to them, so that they outlive it at an early exit.
  MainLoop::Main();
  DistributedNotificationCenter::defaultCenter();
  const DomLib::XercesPlatform keepLibrary;  // or every document would pay for its restart
  AppDelegate delegate;
  for (const std::string& file : arguments.files) delegate.openFile(file);
  delegate.applicationDidFinishLaunching();
  const int status = MainLoop::Main().Run();
  delegate.applicationWillTerminate();
  delegate.Finish(status);
  return arguments.hasUnreadable ? EXIT_FAILURE : status;
}

}  // namespace

int ApplicationMain(int argc, char** argv) {
  try {
    return RunApplication(argc, argv);
  } catch (const std::exception& exception) {
    trace::SystemLog::Error(std::string("cannot run: ") + exception.what());
  } catch (...) {
    trace::SystemLog::Error("cannot run: the XML library does not start");
  }
  return EXIT_FAILURE;
}

}  // namespace Agent
