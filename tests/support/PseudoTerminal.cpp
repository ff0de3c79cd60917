#include "support/PseudoTerminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace TestSupport {

namespace {

constexpr int kPatienceMilliseconds = 30000;

std::string ReadSome(int master, int patience) {
  std::array<char, 4096> buffer;
  pollfd state{master, POLLIN, 0};
  if (::poll(&state, 1, patience) <= 0) return {};
  const ssize_t count = ::read(master, buffer.data(), buffer.size());
  return count > 0 ? std::string(buffer.data(), static_cast<std::size_t>(count)) : std::string();
}

}  // namespace

// The slave is held open, so that the terminal does not hang up between two dialogs.
PseudoTerminal::PseudoTerminal() : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)), slave_(-1) {
  std::array<char, 128> name{};
  if (::grantpt(master_) != 0 || ::unlockpt(master_) != 0 ||
      ::ptsname_r(master_, name.data(), name.size()) != 0) {
    throw std::runtime_error("no pseudo-terminal");
  }
  path_ = name.data();
  slave_ = ::open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
}

PseudoTerminal::~PseudoTerminal() {
  ::close(slave_);
  if (master_ >= 0) ::close(master_);
}

std::string PseudoTerminal::ReadUntil(const std::string& end) {
  while (unread_.find(end) == std::string::npos) {
    const std::string more = ReadSome(master_, kPatienceMilliseconds);
    if (more.empty()) {
      ADD_FAILURE() << "'" << end << "' was not printed, but: " << unread_;
      return std::exchange(unread_, {});
    }
    unread_ += more;
  }
  const std::size_t length = unread_.find(end) + end.size();
  std::string printed = unread_.substr(0, length);
  unread_.erase(0, length);
  return printed;
}

std::string PseudoTerminal::ReadNow() {
  for (std::string more = ReadSome(master_, 0); !more.empty(); more = ReadSome(master_, 0)) unread_ += more;
  return std::exchange(unread_, {});
}

void PseudoTerminal::Type(const std::string& keys) {
  ASSERT_EQ(::write(master_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

void PseudoTerminal::SetColumns(unsigned short columns) const {
  winsize size{};
  size.ws_col = columns;
  ASSERT_EQ(::ioctl(master_, TIOCSWINSZ, &size), 0);
}

void PseudoTerminal::MakeRaw() const {
  termios mode = Mode();
  ::cfmakeraw(&mode);
  ASSERT_EQ(::tcsetattr(slave_, TCSANOW, &mode), 0);
}

termios PseudoTerminal::MakeUnfit() const {
  termios mode = Mode();
  mode.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  mode.c_iflag &= ~static_cast<tcflag_t>(ICRNL);
  EXPECT_EQ(::tcsetattr(slave_, TCSANOW, &mode), 0);
  return mode;
}

termios PseudoTerminal::Mode() const {
  termios mode{};
  EXPECT_EQ(::tcgetattr(slave_, &mode), 0);
  return mode;
}

void PseudoTerminal::HangUp() {
  ::close(std::exchange(master_, -1));
}

}  // namespace TestSupport
