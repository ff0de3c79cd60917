#include "agent/Desk.h"
#include "agent/Outputs.h"
#include "agent/ProcessFigures.h"
#include "agent/Scenarios.h"
#include "agent/ScreenWatch.h"
#include "libs/DialogWire/DialogWire.h"
#include "libs/Files/FileDescriptor.h"
#include "libs/Files/WholeContent.h"
#include "support/VirtualScreen.h"

#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace Bench {
namespace {

using TestSupport::ChildProcess;
using TestSupport::VirtualScreen;

constexpr int kWindows = 20;
// Until then the allocator still takes memory that it keeps.
constexpr int kFirstDialogs = 50;
constexpr int kFurtherDialogs = 25;

using Environment = std::vector<std::string>;

// What a program needs to show a window as on a desktop.
Environment ShownOn(const VirtualScreen& screen) {
  Environment environment = screen.Environment();
  environment.insert(environment.end(), {"XDG_DATA_DIRS=/usr/share", "GSK_RENDERER=cairo"});
  return environment;
}

// What the agent asks when a file with a store is opened.
std::string TrustRequest(Desk& desk) {
  desk.Agent().Bus().ServiceRecords("handleServiceRecordFTA", {desk.FileWithStore("asked")});
  const auto dialogs = desk.Agent().Dialogs();
  if (dialogs.empty() || dialogs.front().first != DialogWire::kAddStore) {
    throw std::runtime_error("nobody is asked");
  }
  return DialogWire::RequestFor(DialogWire::kAddStore, PropertyList::Write(dialogs.front().second));
}

// A standard input that has the text and stays open.
class OpenInput {
 public:
  explicit OpenInput(const std::string& text) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
    reading_ = Files::FileDescriptor(ends[0]);
    writing_ = Files::FileDescriptor(ends[1]);
    if (Files::WriteAll(writing_.Get(), text).error) throw std::runtime_error("the pipe is full");
  }

  // Runs the program with it.
  [[nodiscard]] ChildProcess Run(const std::string& program, const Environment& environment) const {
    const std::string descriptor = std::to_string(reading_.Get());
    return ChildProcess({"/bin/sh", "-c", "exec \"$0\" </proc/self/fd/" + descriptor, program}, environment,
                        {.keepOpen = {reading_.Get()}});
  }

 private:
  Files::FileDescriptor reading_;
  Files::FileDescriptor writing_;
};

// Starts programs with windows, one after the other.
class WindowStarts {
 public:
  WindowStarts(const VirtualScreen& screen, ScreenWatch& watch)
      : watch_(watch), request_(TrustRequest(desk_)), environment_(desk_.Agent().Environment()) {
    const Environment shown = ShownOn(screen);
    environment_.insert(environment_.end(), shown.begin(), shown.end());
  }

  // From before the process is made until its window is painted.
  [[nodiscard]] std::chrono::nanoseconds TimeOf(const std::string& program) {
    const OpenInput input(request_);
    const auto begin = std::chrono::steady_clock::now();
    ChildProcess shown = input.Run(program, environment_);
    watch_.WaitForFrame();
    const auto time = std::chrono::steady_clock::now() - begin;
    shown.Signal(SIGTERM);
    shown.Wait();
    return time;
  }

 private:
  ScreenWatch& watch_;
  Desk desk_;
  const std::string request_;
  Environment environment_;
};

void MeasureWindows(const VirtualScreen& screen, ScreenWatch& watch, Outputs& outputs) {
  WindowStarts starts(screen, watch);
  const std::string dialog = std::string(SR_STAGE_DIR) +
                             "/lib/servicerecords/PlugIns/ServiceRecordUI.bundle/" +
                             DialogWire::kWindowProgram;
  Times dialogs;
  Times bare;
  for (int i = 0; i < kWindows; ++i) {
    bare.push_back(starts.TimeOf(SR_BENCH_DIR "/bare_window"));
    dialogs.push_back(starts.TimeOf(dialog));
  }
  outputs.Add("Dialog", Quantile(dialogs, 0.5));
  outputs.Add("DialogFloor", Quantile(bare, 0.5));
}

// Opens the file as often, and closes the dialog each time.
void Decline(Desk& desk, ScreenWatch& watch, const std::string& file, int times) {
  for (int i = 0; i < times; ++i) {
    const auto call = desk.Agent().Bus().StartServiceRecords("handleServiceRecordFTA", {file});
    watch.WaitForFrame();
    watch.CloseWindow();
    desk.Agent().Bus().WaitForReply(call);
  }
}

void MeasureMemory(const VirtualScreen& screen, ScreenWatch& watch, Outputs& outputs) {
  Desk desk(ShownOn(screen));
  const std::string file = desk.FileWithStore("declined");
  Decline(desk, watch, file, kFirstDialogs);
  outputs.Add("MemoryAfterFewDialogs", Memory(desk.Agent().Pid(), "Private_Dirty"));
  Decline(desk, watch, file, kFurtherDialogs);
  outputs.Add("MemoryAfterManyDialogs", Memory(desk.Agent().Pid(), "Private_Dirty"));
}

}  // namespace

void MeasureDialogs(Outputs& outputs) {
  const VirtualScreen screen;
  ScreenWatch watch(screen.Display());
  MeasureWindows(screen, watch, outputs);
  MeasureMemory(screen, watch, outputs);
}

}  // namespace Bench
