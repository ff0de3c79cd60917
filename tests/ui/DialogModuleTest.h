#pragma once

#include "libs/Display/DisplayVariables.h"
#include "ui/LoadedModule.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

// The module, and dialog programs that are scripts.
class DialogModuleTest : public ::testing::Test {
 protected:
  static constexpr const char* kDetails = "<plist version=\"1.0\"><dict/></plist>";

  int AnswerOfProgram(const std::string& script) {
    module_.Bundle().ScriptDialogProgram(script);
    return module_.EntryPoints().addStore(kDetails);
  }

  // The answer to a question that this thread asks for a host with that context.
  [[nodiscard]] int AddStoreFor(int terminal, int withdrawal) const {
    SRUIHost host = module_.Host();
    host.terminalDescriptor = terminal;
    host.withdrawalDescriptor = withdrawal;
    return module_.EntryPointsFor(host)->addStore(kDetails);
  }

  // The same on that desktop.
  [[nodiscard]] int AddStoreOn(const Display::Variables& desktop) const {
    const std::vector<const char*> variables = Display::PointersTo(desktop);
    SRUIHost host = module_.Host();
    host.desktop = variables.data();
    return module_.EntryPointsFor(host)->addStore(kDetails);
  }

  [[nodiscard]] static bool IsGone(pid_t id) { return ::kill(id, 0) != 0 && errno == ESRCH; }

  // A named pipe through which the dialog program tells that it has got somewhere.
  void MakeEventPipe() {
    ASSERT_EQ(::mkfifo(module_.Bundle().File("event").c_str(), 0600), 0);
    event_ = ::open(module_.Bundle().File("event").c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    ASSERT_GE(event_, 0);
  }

  // The next line that the program wrote into the pipe.
  [[nodiscard]] std::string NextEvent() const {
    std::string line;
    char next = '\0';
    pollfd state{event_, POLLIN, 0};
    while (next != '\n' && ::poll(&state, 1, 30000) > 0 && ::read(event_, &next, 1) == 1) line += next;
    return line;
  }

  // Whether the program has written more than was taken.
  [[nodiscard]] bool HasEvent() const {
    pollfd state{event_, POLLIN, 0};
    return ::poll(&state, 1, 0) > 0;
  }

  void TearDown() override {
    if (event_ >= 0) ::close(event_);
  }

  LoadedModule module_;
  int event_ = -1;
};
