#pragma once

#include "libs/PropertyList/PropertyList.h"
#include "support/BusClient.h"
#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

// One user's machine in a folder: a private session bus, an installed copy of the staged tree whose dialogs
// are scripted, a home. The agent is started directly, or by the bus when something calls it. Everything ends
// with this object.
class TestAgent {
 public:
  // `environment` goes to the bus and the agent, as NAME=value. Without a display in it they have none.
  explicit TestAgent(const std::vector<std::string>& environment = {});
  ~TestAgent();

  [[nodiscard]] BusClient& Bus() { return *client_; }
  [[nodiscard]] const std::string& BusAddress() const { return address_; }
  // What the user's programs run with, as NAME=value.
  [[nodiscard]] const std::vector<std::string>& Environment() const { return environment_; }

  // Turns the trace log on for the next start.
  void EnableLog();
  // Starts the agent as a child of the test, with this added to the environment, and waits until both names
  // are owned.
  void Start(const std::vector<std::string>& environment = {}, const ChildOptions& options = {});
  // Starts the agent's program with these arguments and this test's environment, and leaves it to the caller.
  [[nodiscard]] ChildProcess Run(const std::vector<std::string>& arguments = {},
                                 const ChildOptions& options = {});
  // The started agent's process.
  [[nodiscard]] pid_t Pid() const { return agent_->Pid(); }
  // Its output so far, and that of the dialogs.
  [[nodiscard]] std::string Output() const { return agent_->Output(); }
  // Sends SIGTERM to the started agent and returns its exit status.
  int Terminate();
  // Waits for the end of the started agent and returns its exit status.
  int WaitForEnd();
  // From now on the bus gives this name to nobody.
  void DenyName(const std::string& name);
  // Ends the session bus; there is no client of it afterwards.
  void EndBus();
  // Ends an agent that the bus started.
  void EndActivated();

  // A file for the user to open, and the URI of it.
  std::filesystem::path Write(const std::string& name, const std::string& content);
  static std::string URI(const std::filesystem::path& file);

  // The answer of the next dialogs of that kind ("addStore", "replaceStore").
  void Answer(const std::string& request, const std::string& reply);
  // Dialogs stay open until Release writes a reply for one of them.
  void HoldDialogs();
  void Release(const std::string& reply);
  // What dialogs were asked so far: the request and its dictionary.
  [[nodiscard]] std::vector<std::pair<std::string, PropertyList::Dictionary>> Dialogs();
  [[nodiscard]] std::vector<int> DialogProcesses();

  // Where the scripted dialogs and the test's plug-ins note what happens to them.
  [[nodiscard]] std::filesystem::path DialogsFolder() const { return root_.Path() / "dialogs"; }
  [[nodiscard]] std::filesystem::path Home() const { return root_.Path() / "home"; }
  [[nodiscard]] std::filesystem::path ConfigFolder() const { return Home() / ".config"; }
  [[nodiscard]] std::filesystem::path StoresFile() const {
    return ConfigFolder() / "Morvane/ServiceRecords.plist";
  }
  [[nodiscard]] std::filesystem::path LogFile() const { return Home() / "Library/Logs/ServiceRecord.log"; }
  [[nodiscard]] std::filesystem::path Prefix() const { return root_.Path() / "prefix"; }
  [[nodiscard]] std::filesystem::path BundleFolder() const { return Prefix() / "lib/servicerecords"; }
  // The messages of the trace log without their prefixes.
  [[nodiscard]] std::vector<std::string> LogMessages() const;

 private:
  void AddUnlessGiven(const std::vector<std::string>& variables);
  void InstallCopy();
  // `rules`: further rules of the bus's policy.
  void WriteBusConfiguration(const std::string& rules = {});

  TemporaryFolder root_;
  std::vector<std::string> environment_;
  std::string address_;
  std::unique_ptr<ChildProcess> bus_;
  std::unique_ptr<ChildProcess> agent_;
  std::unique_ptr<BusClient> client_;
};

}  // namespace TestSupport
