#include "support/TestAgent.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace TestSupport {
namespace {

namespace fs = std::filesystem;

constexpr char kServiceRecords[] = "com.morvane.ServiceRecords";
constexpr char kBeacons[] = "com.morvane.Beacons";
constexpr char kMaximumConnections[] = "2000";  // a session bus has more than the default, too

std::string ReadFile(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void WriteFile(const fs::path& file, const std::string& content) {
  fs::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream << content;
  if (!stream.flush()) throw std::runtime_error("cannot write " + file.string());
}

// A second name where the file system allows it: the programs are large.
void LinkOrCopy(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::create_hard_link(from, to, error);
  if (error) fs::copy_file(from, to);
}

void CopyTree(const fs::path& from, const fs::path& to) {
  fs::create_directories(to);
  for (const fs::directory_entry& entry : fs::directory_iterator(from)) {
    const fs::path target = to / entry.path().filename();
    if (entry.is_directory()) {
      CopyTree(entry.path(), target);
    } else {
      LinkOrCopy(entry.path(), target);
    }
  }
}

// Waits for the end of a process that is not a child.
void WaitForProcess(int pid) {
  const int handle = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
  if (handle < 0) return;
  pollfd state{handle, POLLIN, 0};
  const int ended = ::poll(&state, 1, 20'000);
  ::close(handle);
  if (ended <= 0) throw std::runtime_error("process " + std::to_string(pid) + " does not end");
}

}  // namespace

TestAgent::TestAgent(const std::vector<std::string>& environment) {
  InstallCopy();
  fs::create_directories(ConfigFolder());
  fs::create_directories(root_.Path() / "dialogs");
  address_ = "unix:path=" + (root_.Path() / "bus").string();
  environment_ = environment;
  AddUnlessGiven({"HOME=" + Home().string(), "XDG_CONFIG_HOME=" + ConfigFolder().string(),
                  "XDG_CONFIG_DIRS=" + (root_.Path() / "etc").string(),
                  "XDG_DATA_HOME=" + (Home() / ".local/share").string(),
                  "XDG_DATA_DIRS=" + (Prefix() / "share").string(),
                  "XDG_RUNTIME_DIR=" + root_.Path().string(),
                  "SR_TEST_DIALOGS=" + (root_.Path() / "dialogs").string(),
                  "DBUS_SESSION_BUS_ADDRESS=" + address_, "LC_ALL=C.UTF-8", "DISPLAY=", "WAYLAND_DISPLAY="});
  WriteBusConfiguration();
  bus_ = std::make_unique<ChildProcess>(
      std::vector<std::string>{"dbus-daemon", "--nofork", "--nosyslog",
                               "--config-file=" + (root_.Path() / "bus.conf").string(), "--print-address"},
      environment_);
  bus_->WaitForOutput("unix:path=");
  client_ = std::make_unique<BusClient>(address_);
}

TestAgent::~TestAgent() {
  // What the bus started ends with the bus; it is seen to be gone before the folder is.
  try {
    if (agent_ == nullptr && client_ != nullptr) EndActivated();
  } catch (const std::exception&) {
  }
}

void TestAgent::AddUnlessGiven(const std::vector<std::string>& variables) {
  for (const std::string& variable : variables) {
    const std::string name = variable.substr(0, variable.find('=') + 1);
    const auto isSame = [&](const std::string& given) { return given.starts_with(name); };
    if (std::ranges::none_of(environment_, isSame)) environment_.push_back(variable);
  }
}

void TestAgent::InstallCopy() {
  CopyTree(SR_STAGE_DIR, Prefix());
  const fs::path dialog = BundleFolder() / "PlugIns/ServiceRecordUI.bundle/servicerecord-dialog";
  fs::remove(dialog);
  fs::copy_file(fs::path(SR_SOURCE_DIR) / "tests/support/scripted-dialog", dialog);
  const fs::path services = Prefix() / "share/dbus-1/services";
  for (const char* name : {kServiceRecords, kBeacons}) {
    const fs::path file = services / (std::string(name) + ".service");
    fs::remove(file);
    WriteFile(file, "[D-BUS Service]\nName=" + std::string(name) +
                        "\nExec=" + (BundleFolder() / "ServiceRecords").string() + "\n");
  }
}

void TestAgent::WriteBusConfiguration(const std::string& rules) {
  WriteFile(root_.Path() / "bus.conf",
            "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\""
            " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
            "<busconfig><type>session</type><listen>" +
                address_ + "</listen><servicedir>" + (Prefix() / "share/dbus-1/services").string() +
                "</servicedir><limit name=\"max_connections_per_user\">" + kMaximumConnections +
                "</limit><policy context=\"default\"><allow send_destination=\"*\" "
                "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/>" +
                rules + "</policy></busconfig>\n");
}

void TestAgent::DenyName(const std::string& name) {
  WriteBusConfiguration("<deny own=\"" + name + "\"/>");
  client_->Call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReloadConfig");
}

void TestAgent::EnableLog() {
  WriteFile(ConfigFolder() / "com.morvane.ServiceRecords.plist",
            PropertyList::Write(PropertyList::Dictionary{{"LogLevel", 1}}));
}

ChildProcess TestAgent::Run(const std::vector<std::string>& arguments, const ChildOptions& options) {
  std::vector<std::string> command{(BundleFolder() / "ServiceRecords").string()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return ChildProcess(command, environment_, options);
}

void TestAgent::Start(const std::vector<std::string>& environment, const ChildOptions& options) {
  std::vector<std::string> merged = environment_;
  merged.insert(merged.end(), environment.begin(), environment.end());
  agent_ = std::make_unique<ChildProcess>(std::vector{(BundleFolder() / "ServiceRecords").string()}, merged,
                                          options);
  for (const char* name : {kBeacons, kServiceRecords}) {
    if (!client_->WaitUntilOwned(name, true)) throw std::runtime_error(std::string("nobody owns ") + name);
  }
}

int TestAgent::Terminate() {
  agent_->Signal(SIGTERM);
  return WaitForEnd();
}

int TestAgent::WaitForEnd() {
  const int status = agent_->Wait();
  agent_.reset();
  return status;
}

void TestAgent::EndBus() {
  client_.reset();
  bus_.reset();
}

void TestAgent::EndActivated() {
  if (!client_->HasOwner(kServiceRecords)) return;
  const int pid = client_
                      ->Call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                             "GetConnectionUnixProcessID", {kServiceRecords})
                      .get<int>();
  if (pid == ::getpid()) return;  // the test itself stands in for the agent
  ::kill(pid, SIGTERM);
  WaitForProcess(pid);
}

fs::path TestAgent::Write(const std::string& name, const std::string& content) {
  const fs::path file = root_.Path() / name;
  WriteFile(file, content);
  return file;
}

std::string TestAgent::URI(const fs::path& file) {
  return "file://" + file.string();
}

void TestAgent::Answer(const std::string& request, const std::string& reply) {
  WriteFile(root_.Path() / "dialogs" / (request + ".answer"), reply + "\n");
}

void TestAgent::HoldDialogs() {
  const fs::path fifo = root_.Path() / "dialogs/hold";
  if (::mkfifo(fifo.c_str(), 0600) != 0) throw std::runtime_error("no FIFO");
}

void TestAgent::Release(const std::string& reply) {
  WriteFile(root_.Path() / "dialogs/hold", reply + "\n");
}

std::vector<std::pair<std::string, PropertyList::Dictionary>> TestAgent::Dialogs() {
  std::vector<std::pair<std::string, PropertyList::Dictionary>> dialogs;
  std::istringstream requests(ReadFile(root_.Path() / "dialogs/requests"));
  std::string request;
  std::string details;
  // A request without its end is still being written.
  while (std::getline(requests, request, '\0') && std::getline(requests, details, '\0') && !requests.eof()) {
    const auto value = PropertyList::Read(details);
    if (!value) throw std::runtime_error("not a property list: " + details);
    dialogs.emplace_back(request, *value->As<PropertyList::Dictionary>());
  }
  return dialogs;
}

std::vector<int> TestAgent::DialogProcesses() {
  std::istringstream processes(ReadFile(root_.Path() / "dialogs/processes"));
  return {std::istream_iterator<int>(processes), {}};
}

std::vector<std::string> TestAgent::LogMessages() const {
  std::vector<std::string> messages;
  std::istringstream log(ReadFile(LogFile()));
  // A line without its end is still being written.
  for (std::string line; std::getline(log, line) && !log.eof();) {
    const std::size_t end = line.find("]  ");
    if (end != std::string::npos) messages.push_back(line.substr(end + 3));
  }
  return messages;
}

}  // namespace TestSupport
