#include "libs/Terminal/Terminal.h"

#include "libs/Text/TextHelpers.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace Terminal {
namespace {

constexpr int kTurnPollMilliseconds = 100;
constexpr int kAwaitPollMilliseconds = 10;
constexpr std::size_t kLongestLine = 4096;
constexpr std::size_t kUsualColumns = 80;

enum class Answer { Yes, No, Unclear };

Answer AnswerOf(std::string_view text) {
  std::string line = util::AsciiLowerCased(text);
  std::erase_if(line, [](char character) { return character == ' ' || character == '\t'; });
  if (line == "y" || line == "yes") return Answer::Yes;
  return line.empty() || line == "n" || line == "no" ? Answer::No : Answer::Unclear;
}

// The module sends nothing after the request, so whatever is read is only looked at for the end.
bool StandardInputClosed(short events) {
  if (events == 0) return false;
  std::array<char, 256> ignored;
  return ::read(STDIN_FILENO, ignored.data(), ignored.size()) <= 0;
}

bool Interrupted(int error) {
  return error == EINTR || error == EAGAIN;
}

// An opening of its own, so that waiting for it is nobody else's matter.
Files::FileDescriptor OpenPath(const char* path) {
  return Files::FileDescriptor(::open(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
}

// A file of the user's own rather than the terminal: others may lock /dev/tty as well.
Files::FileDescriptor OpenTurnFile() {
  const char* folder = std::getenv("XDG_RUNTIME_DIR");
  if (folder == nullptr || *folder == '\0') return {};
  const std::filesystem::path file = std::filesystem::path(folder) / "servicerecord-dialog.lock";
  return Files::FileDescriptor(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
}

Files::FileDescriptor OpenAnew(int descriptor) {
  return OpenPath(("/proc/self/fd/" + std::to_string(descriptor)).c_str());
}

}  // namespace

std::optional<Terminal> Terminal::Open(int interruption) {
  const char* named = std::getenv("SERVICERECORDS_TERMINAL");
  return On(OpenPath(named != nullptr && *named != '\0' ? named : "/dev/tty"), interruption);
}

std::optional<Terminal> Terminal::OpenAgain(int descriptor, int interruption) {
  Files::FileDescriptor terminal = OpenAnew(descriptor);
  // After a change of the user it may not be opened, only used.
  if (!terminal) terminal = Files::FileDescriptor(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
  return On(std::move(terminal), interruption);
}

std::optional<Terminal> Terminal::On(Files::FileDescriptor terminal, int interruption) {
  if (!terminal || ::isatty(terminal.Get()) == 0) return std::nullopt;
  return Terminal(std::move(terminal), interruption);
}

bool Terminal::TakeTurn() {
  turn_ = OpenTurnFile();
  const int descriptor = turn_ ? turn_.Get() : terminal_.Get();
  while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    if (!Interrupted(errno)) return false;
    std::array<pollfd, 2> ends{{{STDIN_FILENO, POLLIN, 0}, {interruption_, POLLIN, 0}}};
    if (::poll(ends.data(), ends.size(), kTurnPollMilliseconds) <= 0) continue;
    if (ends[1].revents != 0 || StandardInputClosed(ends[0].revents)) return false;
  }
  savedMode_ = SwitchToLines();
  return true;
}

std::size_t Terminal::Columns() const {
  winsize size{};
  if (::ioctl(terminal_.Get(), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualColumns;
  return size.ws_col;
}

bool Terminal::Print(std::string_view utf8) {
  while (!utf8.empty()) {
    const ssize_t count = ::write(terminal_.Get(), utf8.data(), utf8.size());
    if (count >= 0) {
      utf8.remove_prefix(static_cast<std::size_t>(count));
    } else if (!Interrupted(errno) || !WaitFor(POLLOUT)) {
      return false;
    }
  }
  return true;
}

bool Terminal::Confirm(std::string_view question) {
  Forget();
  if (!Print(question)) return false;
  std::array<char, kLongestLine> line;
  while (const std::optional<std::size_t> length = ReadLine(line)) {
    const Answer answer = AnswerOf({line.data(), *length});
    if (answer != Answer::Unclear) return answer == Answer::Yes;
    if (!Print("Please answer yes or no. [y/N] ")) return false;
  }
  Print("\nNot answered, taken as no.\n");
  return false;
}

std::optional<std::size_t> Terminal::Ask(std::string_view question, std::span<char> answer, Echo echo) {
  // Before the question, so that whoever waits for it can answer at once.
  SetEcho(echo);
  const std::optional<std::size_t> length = Print(question) ? ReadLine(answer) : std::nullopt;
  SetEcho(Echo::On);
  if (echo == Echo::Off) Print("\n");
  return length;
}

void Terminal::Forget() const {
  ::tcflush(terminal_.Get(), TCIFLUSH);
}

void Terminal::SetEcho(Echo echo) const {
  termios mode{};
  if (::tcgetattr(terminal_.Get(), &mode) != 0) return;
  mode.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
  if (echo == Echo::On) mode.c_lflag |= ECHO;
  ::tcsetattr(terminal_.Get(), TCSADRAIN, &mode);
}

Terminal::SavedMode Terminal::SwitchToLines() const {
  termios mode{};
  if (::tcgetattr(terminal_.Get(), &mode) != 0) return {};
  SavedMode saved(new termios(mode), ModeRestorer{terminal_.Get()});
  mode.c_iflag |= ICRNL;
  mode.c_iflag &= ~static_cast<tcflag_t>(IGNCR | INLCR);
  mode.c_oflag |= OPOST | ONLCR;
  mode.c_lflag |= ICANON | ECHO;
  ::tcsetattr(terminal_.Get(), TCSADRAIN, &mode);
  return saved;
}

void Terminal::ModeRestorer::operator()(termios* mode) const {
  const std::unique_ptr<termios> owned(mode);
  ::tcsetattr(terminal, TCSADRAIN, mode);
}

bool Terminal::WaitFor(short events) const {
  std::array<pollfd, 3> states{
      {{STDIN_FILENO, POLLIN, 0}, {interruption_, POLLIN, 0}, {terminal_.Get(), events, 0}}};
  while (true) {
    if (::poll(states.data(), states.size(), -1) < 0) {
      if (errno != EINTR) return false;
      continue;
    }
    if (StandardInputClosed(states[0].revents) || states[1].revents != 0) return false;
    if (states[2].revents != 0) return true;
  }
}

std::optional<std::size_t> Terminal::ReadLine(std::span<char> line) {
  std::size_t used = 0;
  while (used < line.size() && WaitFor(POLLIN)) {
    const std::span<char> rest = line.subspan(used);
    const ssize_t count = ::read(terminal_.Get(), rest.data(), rest.size());
    if (count < 0 && Interrupted(errno)) continue;
    if (count <= 0) return std::nullopt;
    const std::string_view part(rest.data(), static_cast<std::size_t>(count));
    if (const std::size_t end = part.find_first_of("\r\n"); end != part.npos) return used + end;
    used += part.size();
  }
  return std::nullopt;
}

void AwaitTurn(int descriptor, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  Files::FileDescriptor turn = OpenTurnFile();
  if (!turn) turn = OpenAnew(descriptor);
  while (::flock(turn.Get(), LOCK_EX | LOCK_NB) != 0 && Interrupted(errno) &&
         std::chrono::steady_clock::now() < deadline) {
    ::poll(nullptr, 0, kAwaitPollMilliseconds);
  }
}

}  // namespace Terminal
