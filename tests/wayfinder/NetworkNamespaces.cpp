#include "wayfinder/NetworkNamespaces.h"

#include "support/ChildProcess.h"
#include "wayfinder/ProcessCounts.h"

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace TestSupport {
namespace {

Files::FileDescriptor CurrentNamespace() {
  return Files::FileDescriptor(::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC));
}

void Enter(const Files::FileDescriptor& network) {
  if (::setns(network.Get(), CLONE_NEWNET) != 0) throw std::runtime_error("cannot enter a namespace");
}

// An ordinary user is the administrator of a user namespace. Empty, or why there is none.
std::string BecomeAdministrator() {
  if (::geteuid() == 0) return {};
  const std::string identity = "0 " + std::to_string(::geteuid()) + " 1";
  const std::string group = "0 " + std::to_string(::getegid()) + " 1";
  if (::unshare(CLONE_NEWUSER) != 0) return std::string("no user namespace: ") + std::strerror(errno);
  std::ofstream("/proc/self/setgroups") << "deny";
  std::ofstream("/proc/self/uid_map") << identity;
  std::ofstream("/proc/self/gid_map") << group;
  return ::geteuid() == 0 ? std::string() : std::string("no user mapping");
}

std::string NewNamespace(Files::FileDescriptor& made) {
  if (::unshare(CLONE_NEWNET) != 0) return std::string("no network namespace: ") + std::strerror(errno);
  made = CurrentNamespace();
  return {};
}

std::string RunIP(const std::vector<std::string>& arguments) {
  std::vector<std::string> command{"ip"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  ChildProcess process(command, {}, {.captureErrors = true});
  if (process.Wait() != 0) throw std::runtime_error("ip: " + process.Output());
  return process.Output();
}

// The kernel says so some time after both ends were set up.
bool IsConnected(const std::string& link) {
  return RunIP({"-oneline", "link", "show", link}).find(" state UP ") != std::string::npos;
}

}  // namespace

void NetworkNamespaces::SetUp() {
  const std::string refusal = BecomeAdministrator();
  if (!refusal.empty()) GTEST_SKIP() << refusal;
  original_ = CurrentNamespace();
  for (Files::FileDescriptor* const made : {&far_, &near_}) {
    const std::string reason = NewNamespace(*made);
    if (!reason.empty()) GTEST_SKIP() << reason;
    RunIP({"link", "set", "lo", "up"});
  }
  if (!HasKind("veth")) GTEST_SKIP() << "the kernel makes no veth links";
}

void NetworkNamespaces::TearDown() {
  if (original_.Get() >= 0) ::setns(original_.Get(), CLONE_NEWNET);
}

void NetworkNamespaces::IP(const std::vector<std::string>& arguments) {
  RunIP(arguments);
}

void NetworkNamespaces::FarIP(const std::vector<std::string>& arguments) {
  InFar([&arguments] { RunIP(arguments); });
}

bool NetworkNamespaces::HasKind(const std::string& kind) {
  try {
    RunIP({"link", "add", "kind-check", "type", kind});
    RunIP({"link", "delete", "kind-check"});
    return true;
  } catch (const std::runtime_error&) {
    return false;
  }
}

void NetworkNamespaces::InFar(const std::function<void()>& action) {
  Enter(far_);
  try {
    action();
  } catch (...) {
    Enter(near_);
    throw;
  }
  Enter(near_);
}

void NetworkNamespaces::ConnectByWire() {
  const std::string far = "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(far_.Get());
  IP({"link", "add", "near0", "type", "veth", "peer", "name", "far0"});
  IP({"link", "set", "far0", "netns", far});
  for (const char* address : {"10.1.0.2/24", "10.1.0.3/24", "10.1.0.254/24"})
    FarIP({"address", "add", address, "dev", "far0"});
  FarIP({"link", "set", "far0", "up"});
  IP({"address", "add", "10.1.0.1/24", "dev", "near0"});
  IP({"link", "set", "near0", "up"});
  ASSERT_TRUE(ComesTrue([] { return IsConnected("near0"); }));
}

}  // namespace TestSupport
