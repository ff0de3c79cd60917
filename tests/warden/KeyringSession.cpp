#include "warden/KeyringSession.h"

#include "support/BusClient.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace TestSupport {
namespace {

// No service files: nothing of the machine's own is started.
constexpr const char* kBusConfiguration = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>@ADDRESS@</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/>
  </policy>
</busconfig>
)";

}  // namespace

KeyringSession::KeyringSession() : address_("unix:path=" + (folder_.Path() / "bus").string()) {
  std::string configuration = kBusConfiguration;
  configuration.replace(configuration.find("@ADDRESS@"), 9, address_);
  std::ofstream(folder_.Path() / "bus.conf") << configuration;
  ::setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1);
  ::setenv("HOME", folder_.Path().c_str(), 1);
  ::setenv("XDG_DATA_HOME", (folder_.Path() / "data").c_str(), 1);
  ::setenv("XDG_RUNTIME_DIR", folder_.Path().c_str(), 1);
  bus_.emplace(std::vector<std::string>{"dbus-daemon", "--nofork", "--nosyslog", "--print-address",
                                        "--config-file=" + (folder_.Path() / "bus.conf").string()});
  bus_->WaitForOutput("unix:path=");
  // The keyring's password comes from standard input.
  keyring_.emplace(
      std::vector<std::string>{
          "bash", "-c",
          "exec gnome-keyring-daemon --foreground --unlock --components=secrets <<<keyring-password"},
      std::vector<std::string>{}, ChildOptions{.captureErrors = true});
  BusClient client(address_);
  if (!client.WaitUntilOwned("org.freedesktop.secrets", true)) {
    throw std::runtime_error("no keyring: " + keyring_->Output());
  }
}

KeyringSession::~KeyringSession() {
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
}

void KeyringSession::Lock() {
  static_cast<void>(Run({"gdbus", "call", "--session", "--dest", "org.freedesktop.secrets", "--object-path",
                         "/org/freedesktop/secrets", "--method", "org.freedesktop.Secret.Service.Lock",
                         "['/org/freedesktop/secrets/collection/login']"}));
}

void KeyringSession::Keep(const std::string& collection, const std::string& host, const std::string& realm,
                          const std::string& secret) {
  static_cast<void>(Run({"bash", "-c", "printf %s \"$0\" | secret-tool store \"$@\"", secret, "--label=Test",
                         "--collection=" + collection, "xdg:schema", "com.morvane.ServiceRecords.Credential",
                         "protocol", "https", "host", host, "realm", realm, "username", "user"}));
}

std::string KeyringSession::Kept(const std::string& host) {
  return Run({"secret-tool", "search", "--all", "host", host});
}

std::string KeyringSession::Run(const std::vector<std::string>& command) {
  ChildProcess tool(command, {}, {.captureErrors = true});
  if (tool.Wait() != 0) throw std::runtime_error(command.front() + ": " + tool.Output());
  return tool.Output();
}

}  // namespace TestSupport
