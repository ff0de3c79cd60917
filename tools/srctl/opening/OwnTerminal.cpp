#include "opening/OwnTerminal.h"

#include "libs/Terminal/Terminal.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <utility>

namespace Srctl {
namespace {

// Longer than a dialog program takes to close.
constexpr std::chrono::seconds kClosingTime{2};

Files::FileDescriptor OpenTerminal(const char* path) {
  return Files::FileDescriptor(::open(path, O_RDWR | O_NOCTTY | O_CLOEXEC));
}

// By its own name rather than as /dev/tty, which is another one to whoever it is handed to.
Files::FileDescriptor OpenControllingTerminal() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::tcgetpgrp(descriptor) < 0) continue;  // none, or another session's
    Files::FileDescriptor terminal = OpenTerminal(("/proc/self/fd/" + std::to_string(descriptor)).c_str());
    if (terminal) return terminal;
  }
  return OpenTerminal("/dev/tty");
}

}  // namespace

std::optional<OwnTerminal> OwnTerminal::Find() {
  Files::FileDescriptor terminal = OpenControllingTerminal();
  termios mode{};
  if (!terminal || ::tcgetattr(terminal.Get(), &mode) != 0) return std::nullopt;
  return OwnTerminal(std::move(terminal), mode);
}

bool OwnTerminal::IsOurs() const {
  return ::tcgetpgrp(terminal_.Get()) == ::getpgrp();
}

void OwnTerminal::Lend() const {
  std::signal(SIGTSTP, SIG_IGN);
}

void OwnTerminal::TakeBack() const {
  Terminal::AwaitTurn(terminal_.Get(), kClosingTime);
  ::tcsetattr(terminal_.Get(), TCSADRAIN, &mode_);
}

}  // namespace Srctl
