#include "support/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace TestSupport {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kEndLimit{10'000};
constexpr milliseconds kWaitLimit{60'000};
constexpr milliseconds kOutputLimit{20'000};
constexpr int kLookLimit = 20;  // milliseconds until output is looked for that nobody announces

int Checked(int result, const char* what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

// The C library's own declaration of the call has no C linkage in Debian 12.
int OpenProcess(pid_t pid) {
  return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0U));
}

std::string NameOf(const std::string& assignment) {
  return assignment.substr(0, assignment.find('=') + 1);
}

std::vector<std::string> MergedEnvironment(const std::vector<std::string>& added) {
  std::vector<std::string> merged = added;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string name = NameOf(*entry);
    const auto sameName = [&](const std::string& assignment) { return assignment.starts_with(name); };
    if (std::none_of(added.begin(), added.end(), sameName)) merged.emplace_back(*entry);
  }
  return merged;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// A file rather than a pipe, so that a child whose output nobody reads is never held up.
Files::FileDescriptor MakeOutput() {
  std::string name = "/tmp/servicerecords-test-output-XXXXXX";
  Files::FileDescriptor file(Checked(::mkostemp(name.data(), O_CLOEXEC | O_APPEND), "mkostemp"));
  ::unlink(name.c_str());
  return file;
}

// Readable when the file has changed. All programs of a user share few of these: nobody keeps one, and where
// there is none to be had the result is empty.
Files::FileDescriptor WatchChanges(const Files::FileDescriptor& file) {
  Files::FileDescriptor changes(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  const std::string name = "/proc/self/fd/" + std::to_string(file.Get());
  if (changes) Checked(::inotify_add_watch(changes.Get(), name.c_str(), IN_MODIFY), "inotify_add_watch");
  return changes;
}

// Between fork and exec: only calls that are safe there.
[[noreturn]] void Become(char** command, char** environment, int output, const ChildOptions& options) {
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  ::dup2(::open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
  ::dup2(output, STDOUT_FILENO);
  if (options.captureErrors) ::dup2(output, STDERR_FILENO);
  for (const int descriptor : options.keepOpen) ::fcntl(descriptor, F_SETFD, 0);
  ::execvpe(command[0], command, environment);
  ::_exit(127);
}

int Remaining(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
  return static_cast<int>(std::max(left, milliseconds(0)).count());
}

void SkipChanges(int changes) {
  std::array<char, 4096> events;
  while (::read(changes, events.data(), events.size()) > 0) {
  }
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const std::vector<std::string>& environment, const ChildOptions& options)
    : output_(MakeOutput()) {
  std::vector<std::string> arguments = command;
  std::vector<std::string> merged = MergedEnvironment(environment);
  const std::vector<char*> argumentPointers = Pointers(arguments);
  const std::vector<char*> environmentPointers = Pointers(merged);
  pid_ = Checked(::fork(), "fork");
  if (pid_ == 0) {
    Become(const_cast<char**>(argumentPointers.data()), const_cast<char**>(environmentPointers.data()),
           output_.Get(), options);
  }
  process_ = Files::FileDescriptor(Checked(OpenProcess(pid_), "pidfd_open"));
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      status_(other.status_),
      process_(std::move(other.process_)),
      output_(std::move(other.output_)) {}

ChildProcess::~ChildProcess() {
  if (pid_ < 0 || status_) return;
  Signal(SIGTERM);
  if (WaitFor(kEndLimit)) return;
  Signal(SIGKILL);
  static_cast<void>(WaitFor(kEndLimit));
}

void ChildProcess::Signal(int signal) {
  if (IsRunning()) ::kill(pid_, signal);
}

int ChildProcess::Wait() {
  const std::optional<int> status = WaitFor(kWaitLimit);
  if (!status) throw std::runtime_error("process " + std::to_string(pid_) + " does not end");
  return *status;
}

std::optional<int> ChildProcess::WaitFor(milliseconds limit) {
  if (status_) return status_;
  const Clock::time_point deadline = Clock::now() + limit;
  pollfd ended{process_.Get(), POLLIN, 0};
  while (::poll(&ended, 1, Remaining(deadline)) < 0 && errno == EINTR) {
  }
  int waitStatus = 0;
  if (::waitpid(pid_, &waitStatus, WNOHANG) == pid_) TakeStatus(waitStatus);
  return status_;
}

void ChildProcess::TakeStatus(int waitStatus) {
  status_ = WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : 128 + WTERMSIG(waitStatus);
}

std::string ChildProcess::Output() const {
  std::string output;
  std::array<char, 8192> part;
  ssize_t count = 0;
  while ((count = ::pread(output_.Get(), part.data(), part.size(), static_cast<off_t>(output.size()))) > 0) {
    output.append(part.data(), static_cast<std::size_t>(count));
  }
  return output;
}

std::string ChildProcess::WaitForOutput(const std::string& text) {
  const Clock::time_point deadline = Clock::now() + kOutputLimit;
  const Files::FileDescriptor changes = WatchChanges(output_);
  for (;;) {
    SkipChanges(changes.Get());
    // What a child that has ended had to say was said before.
    const bool isLast = !IsRunning() || Clock::now() >= deadline;
    const std::string output = Output();
    if (output.find(text) != std::string::npos) return output;
    if (isLast) throw std::runtime_error("no \"" + text + "\" in the output: " + output);
    std::array<pollfd, 2> events{pollfd{changes.Get(), POLLIN, 0}, pollfd{process_.Get(), POLLIN, 0}};
    ::poll(events.data(), events.size(), changes ? Remaining(deadline) : kLookLimit);
  }
}

}  // namespace TestSupport
