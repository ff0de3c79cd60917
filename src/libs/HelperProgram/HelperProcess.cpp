#include "libs/HelperProgram/HelperProcess.h"

#include "libs/Lifetime/UniqueHandle.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <utility>

// The header of glibc 2.36 does not say itself that its functions are C.
extern "C" {
#include <sys/pidfd.h>
}

namespace HelperProgram {
namespace {

constexpr int kTimeToEndMilliseconds = 1000;
constexpr int kFirstDescriptorPastStandard = 3;

using FileActionsPtr = Lifetime::UniqueHandle<posix_spawn_file_actions_t, ::posix_spawn_file_actions_destroy>;
using SpawnAttributesPtr = Lifetime::UniqueHandle<posix_spawnattr_t, ::posix_spawnattr_destroy>;

struct Channel {
  Files::FileDescriptor ours;
  Files::FileDescriptor theirs;
  explicit operator bool() const { return ours && theirs; }
};

// In a process without standard descriptors the new ones would take their numbers and overwrite each other
// when they are put in place.
Files::FileDescriptor PastStandard(int descriptor) {
  if (descriptor >= kFirstDescriptorPastStandard) return Files::FileDescriptor(descriptor);
  const Files::FileDescriptor low(descriptor);
  return Files::FileDescriptor(::fcntl(low.Get(), F_DUPFD_CLOEXEC, kFirstDescriptorPastStandard));
}

// Past all places, so that none is overwritten before it is put into its own.
Files::FileDescriptor CopyOfGiven(int descriptor) {
  return Files::FileDescriptor(
      descriptor < 0 ? -1 : ::fcntl(descriptor, F_DUPFD_CLOEXEC, HelperProcess::kGivenDescriptor + 1));
}

bool MakeNonBlocking(const Files::FileDescriptor& descriptor) {
  const int flags = ::fcntl(descriptor.Get(), F_GETFL);
  return flags >= 0 && ::fcntl(descriptor.Get(), F_SETFL, flags | O_NONBLOCK) == 0;
}

// A socket, because a write to a pipe whose reader has died raises SIGPIPE in the agent.
Channel MakeInput() {
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return {};
  return {PastStandard(ends[0]), PastStandard(ends[1])};
}

Channel MakeOutput() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return {};
  return {PastStandard(ends[0]), PastStandard(ends[1])};
}

struct Descriptors {
  int input;
  int output;
  int given;
};

// The given one last: its place may be that of one of the others until then.
bool FillFileActions(posix_spawn_file_actions_t* actions, const Descriptors& descriptors) {
  const bool isGiven = descriptors.given >= 0;
  return ::posix_spawn_file_actions_adddup2(actions, descriptors.input, STDIN_FILENO) == 0 &&
         ::posix_spawn_file_actions_adddup2(actions, descriptors.output, STDOUT_FILENO) == 0 &&
         (!isGiven || ::posix_spawn_file_actions_adddup2(actions, descriptors.given,
                                                         HelperProcess::kGivenDescriptor) == 0) &&
         ::posix_spawn_file_actions_addclosefrom_np(
             actions, isGiven ? HelperProcess::kGivenDescriptor + 1 : kFirstDescriptorPastStandard) == 0;
}

bool FillAttributes(posix_spawnattr_t* attributes) {
  sigset_t none;
  sigset_t all;
  ::sigemptyset(&none);
  ::sigfillset(&all);
  return ::posix_spawnattr_setsigmask(attributes, &none) == 0 &&
         ::posix_spawnattr_setsigdefault(attributes, &all) == 0 &&
         ::posix_spawnattr_setflags(attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF) == 0;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

std::optional<pid_t> Spawn(std::vector<std::string> command, std::vector<std::string> environment,
                           const Descriptors& descriptors) {
  posix_spawn_file_actions_t actionsStorage;
  posix_spawnattr_t attributesStorage;
  if (::posix_spawn_file_actions_init(&actionsStorage) != 0) return std::nullopt;
  const FileActionsPtr actions(&actionsStorage);
  if (::posix_spawnattr_init(&attributesStorage) != 0) return std::nullopt;
  const SpawnAttributesPtr attributes(&attributesStorage);
  if (!FillFileActions(actions.get(), descriptors) || !FillAttributes(attributes.get())) {
    return std::nullopt;
  }

  const std::vector<char*> arguments = Pointers(command);
  const std::vector<char*> variables = Pointers(environment);
  pid_t id = -1;
  if (::posix_spawn(&id, arguments.front(), actions.get(), attributes.get(), arguments.data(),
                    environment.empty() ? environ : variables.data()) != 0) {
    return std::nullopt;
  }
  return id;
}

void Reap(pid_t id) {
  while (::waitpid(id, nullptr, 0) < 0 && errno == EINTR) {
  }
}

// Where the process ignores SIGCHLD the number may already be another process's.
void KillUnlessReaped(pid_t id) {
  if (::waitpid(id, nullptr, WNOHANG) != 0) return;
  ::kill(id, SIGKILL);
  Reap(id);
}

bool EndsInTime(int process) {
  pollfd state{process, POLLIN, 0};
  int ready = 0;
  do {
    ready = ::poll(&state, 1, kTimeToEndMilliseconds);
  } while (ready < 0 && errno == EINTR);
  return ready > 0;
}

bool WouldBlock(int error) {
  return error == EAGAIN || error == EINTR;
}

}  // namespace

std::optional<HelperProcess> HelperProcess::Start(const std::filesystem::path& program,
                                                  std::vector<std::string> arguments, int given,
                                                  std::vector<std::string> environment) {
  Channel input = MakeInput();
  Channel output = MakeOutput();
  if (!input || !output || !MakeNonBlocking(input.ours) || !MakeNonBlocking(output.ours)) return std::nullopt;

  const Files::FileDescriptor copy = CopyOfGiven(given);
  arguments.insert(arguments.begin(), program.string());
  const std::optional<pid_t> id = Spawn(std::move(arguments), std::move(environment),
                                        {input.theirs.Get(), output.theirs.Get(), copy.Get()});
  if (!id) return std::nullopt;
  Files::FileDescriptor process(::pidfd_open(*id, 0));
  if (!process) {
    KillUnlessReaped(*id);
    return std::nullopt;
  }
  return HelperProcess(*id, std::move(process), std::move(input.ours), std::move(output.ours));
}

HelperProcess::HelperProcess(pid_t id, Files::FileDescriptor process, Files::FileDescriptor input,
                             Files::FileDescriptor output)
    : id_(id), process_(std::move(process)), input_(std::move(input)), output_(std::move(output)) {}

HelperProcess::HelperProcess(HelperProcess&& other) noexcept = default;

HelperProcess::~HelperProcess() {
  if (!process_) return;
  input_.Close();
  output_.Close();
  if (!EndsInTime(process_.Get())) ::pidfd_send_signal(process_.Get(), SIGKILL, nullptr, 0);
  Reap(id_);
}

bool HelperProcess::HasSucceeded() const {
  siginfo_t end{};
  const auto process = static_cast<id_t>(process_.Get());
  return ::waitid(P_PIDFD, process, &end, WEXITED | WNOHANG | WNOWAIT) == 0 && end.si_code == CLD_EXITED &&
         end.si_status == 0;
}

std::size_t HelperProcess::SendSome(std::string_view text) const {
  if (text.empty()) return 0;
  const ssize_t count = ::send(input_.Get(), text.data(), text.size(), MSG_NOSIGNAL);
  if (count >= 0) return static_cast<std::size_t>(count);
  return WouldBlock(errno) ? 0 : text.size();
}

std::optional<std::size_t> HelperProcess::ReadSome(std::span<char> buffer) const {
  const ssize_t count = ::read(output_.Get(), buffer.data(), buffer.size());
  if (count > 0) return static_cast<std::size_t>(count);
  if (count < 0 && WouldBlock(errno)) return 0;
  return std::nullopt;
}

}  // namespace HelperProgram
