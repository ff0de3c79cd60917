#include "support/AgentTest.h"
#include "support/LoopbackListener.h"

#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using TestSupport::AgentTest;

class ProcessLife : public AgentTest {
 protected:
  [[nodiscard]] std::string Program() const { return (agent_.BundleFolder() / "ServiceRecords").string(); }

  static std::string Content(const std::filesystem::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  // The names of the agent's threads that are not its own.
  [[nodiscard]] std::vector<std::string> ForeignThreads() const {
    std::vector<std::string> names;
    for (const auto& thread :
         std::filesystem::directory_iterator("/proc/" + std::to_string(agent_.Pid()) + "/task")) {
      const std::string name = Content(thread.path() / "comm");
      if (name != "ServiceRecords\n") names.push_back(name);
    }
    return names;
  }

  [[nodiscard]] TestSupport::ChildProcess RunOnBus(const TestSupport::LoopbackListener& bus) const {
    auto environment = agent_.Environment();
    std::erase_if(environment, [](const std::string& assignment) { return assignment.starts_with("DBUS_"); });
    environment.push_back("DBUS_SESSION_BUS_ADDRESS=tcp:host=127.0.0.1,port=" + std::to_string(bus.port));
    return TestSupport::ChildProcess({Program()}, environment);
  }

  // The next connection, on which the other side has begun to speak.
  static Files::FileDescriptor AcceptConnection(const TestSupport::LoopbackListener& bus) {
    Files::FileDescriptor connection(::accept(bus.socket.Get(), nullptr, nullptr));
    char first = 1;
    EXPECT_EQ(::recv(connection.Get(), &first, 1, 0), 1);
    return connection;
  }

  // Before its first instruction a program can only be killed by a signal, or have it kept back.
  [[nodiscard]] TestSupport::ChildProcess RunWithTerminationBlocked() {
    sigset_t termination;
    sigset_t before;
    ::sigemptyset(&termination);
    ::sigaddset(&termination, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &termination, &before);
    TestSupport::ChildProcess agent = agent_.Run();
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return agent;
  }
};

TEST_F(ProcessLife, TheBusStartsTheAgentForEitherName) {
  EXPECT_EQ(agent_.Bus().Beacons("getCurrentGatewayForStore", {"https://localhost/x"}),
            nlohmann::json::object());
  EXPECT_TRUE(agent_.Bus().HasOwner("com.morvane.ServiceRecords"));
  agent_.EndActivated();
  EXPECT_EQ(agent_.Bus().ServiceRecords("allStores"), nlohmann::json::array());
  EXPECT_TRUE(agent_.Bus().HasOwner("com.morvane.Beacons"));
}

TEST_F(ProcessLife, AnInstanceStartedWithAFileDeliversItToTheRunningAgentAndEnds) {
  agent_.Start();
  auto forwarder = agent_.Run({OpenableFile("a.cr", {Store("s1", "One")})});
  EXPECT_EQ(forwarder.Wait(), 0);
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

TEST_F(ProcessLife, AnInstanceStartedWithAFileStartsTheAgentWhenNoneRuns) {
  auto forwarder = agent_.Run({OpenableFile("a.cr", {Store("s1", "One")})});
  EXPECT_EQ(forwarder.Wait(), 0);
  EXPECT_TRUE(agent_.Bus().HasOwner("com.morvane.ServiceRecords"));
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

TEST_F(ProcessLife, ADeliveringInstanceWaitsUntilTheFileHasBeenHandled) {
  agent_.Start();
  agent_.HoldDialogs();
  auto forwarder = agent_.Run({OpenableFile("a.cr", {Store("s1", "One")})});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return agent_.Dialogs().size() == 1; }));
  EXPECT_TRUE(forwarder.IsRunning());
  agent_.Release("accepted");
  EXPECT_EQ(forwarder.Wait(), 0);
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

TEST_F(ProcessLife, TerminationEndsWithStatusZero) {
  agent_.Start();
  EXPECT_EQ(agent_.Terminate(), 0);
  EXPECT_TRUE(agent_.Bus().WaitUntilOwned("com.morvane.ServiceRecords", false));
}

TEST_F(ProcessLife, ASignalThatCameBeforeTheProgramEndsItWithStatusZero) {
  TestSupport::ChildProcess agent(
      {"env", "--block-signal=TERM", "sh", "-c", "kill -TERM $$ && exec \"$0\"", Program()},
      agent_.Environment());
  EXPECT_EQ(agent.Wait(), 0);
}

TEST_F(ProcessLife, ASignalAtAnyMomentOfTheStartEndsItWithStatusZero) {
  for (int moment = 0; moment < 60; moment += 2) {
    TestSupport::ChildProcess agent = RunWithTerminationBlocked();
    EXPECT_EQ(agent.WaitFor(std::chrono::milliseconds(moment)), std::nullopt);
    agent.Signal(SIGTERM);
    EXPECT_EQ(agent.Wait(), 0) << moment;
  }
}

TEST_F(ProcessLife, WhileTheBusDoesNotAnswerTerminationEndsTheStartWithStatusZero) {
  const TestSupport::LoopbackListener bus;
  TestSupport::ChildProcess agent = RunOnBus(bus);
  const Files::FileDescriptor connection = AcceptConnection(bus);
  agent.Signal(SIGTERM);
  EXPECT_EQ(agent.Wait(), 0);
}

// As at the end of a session.
TEST_F(ProcessLife, ABusThatEndsTogetherWithTheStartMakesItNoFailure) {
  TestSupport::LoopbackListener bus;
  TestSupport::ChildProcess agent = RunOnBus(bus);
  Files::FileDescriptor connection = AcceptConnection(bus);
  agent.Signal(SIGTERM);
  bus.socket.Close();
  connection.Close();
  EXPECT_EQ(agent.Wait(), 0);
}

TEST_F(ProcessLife, WithoutABusTheStartIsAFailure) {
  TestSupport::LoopbackListener bus;
  bus.socket.Close();
  EXPECT_EQ(RunOnBus(bus).Wait(), 1);
}

TEST_F(ProcessLife, AnInterruptEndsTheAgentThoughAShellHadItIgnored) {
  TestSupport::ChildProcess agent({"sh", "-c", "trap '' INT TERM && exec \"$0\"", Program()},
                                  agent_.Environment());
  ASSERT_TRUE(agent_.Bus().WaitUntilOwned("com.morvane.ServiceRecords", true));
  agent.Signal(SIGINT);
  EXPECT_EQ(agent.Wait(), 0);
}

TEST_F(ProcessLife, AtTheEndAcceptedStoresAreAnnouncedTheCallAnsweredAndTheClientLeftAlone) {
  int activations = 0;
  agent_.Bus().OfferApplication("/com/morvane/quillon/velt", activations);
  agent_.Bus().OwnName("com.morvane.quillon.velt");
  agent_.Start();
  agent_.HoldDialogs();
  const std::uint64_t call = agent_.Bus().StartServiceRecords(
      "handleServiceRecordFTA", {OpenableFile("a.cr", {Store("s1", "One"), Store("s2", "Two")})});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return agent_.Dialogs().size() == 1; }));
  agent_.Release("accepted");
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return agent_.Dialogs().size() == 2; }));
  EXPECT_EQ(agent_.Terminate(), 0);
  EXPECT_NO_THROW(agent_.Bus().WaitForReply(call));
  EXPECT_EQ(CountNotifications(), 1U);
  EXPECT_TRUE(agent_.Bus().WaitUntilOwned("com.morvane.ServiceRecords", false));
  EXPECT_EQ(activations, 0);
  agent_.Start();
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

TEST_F(ProcessLife, TerminationClosesAnOpenTrustDialogAsDeclined) {
  agent_.Start();
  agent_.HoldDialogs();
  agent_.Bus().OpenFiles({agent_.URI(OpenableFile("a.cr", {Store("s1", "One")}))});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return agent_.Dialogs().size() == 1; }));
  EXPECT_EQ(agent_.Terminate(), 0);
  for (const int process : agent_.DialogProcesses()) EXPECT_NE(::kill(process, 0), 0) << "the dialog is gone";
  agent_.Start();
  EXPECT_THAT(StoreIDs(), IsEmpty());
}

TEST_F(ProcessLife, TerminationReachesAReplaceDialogWhileAChangeWaitsForTheList) {
  agent_.Start();
  AskToReplace();
  const std::uint64_t call =
      agent_.Bus().StartServiceRecords("setDefaultGatewayForStoreIDTo", {"s1", "Branch"});
  EXPECT_EQ(agent_.Terminate(), 0);
  agent_.Bus().WaitForReply(call);
  agent_.Start();
  EXPECT_EQ(agent_.Bus().ServiceRecords("storeForID", {"s1"})["StoreName"], "Old");
}

TEST_F(ProcessLife, ADeliveringInstanceThatIsTerminatedEndsWithStatusZero) {
  agent_.Start();
  agent_.HoldDialogs();
  auto forwarder = agent_.Run({OpenableFile("a.cr", {Store("s1", "One")})});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return agent_.Dialogs().size() == 1; }));
  forwarder.Signal(SIGTERM);
  EXPECT_EQ(forwarder.Wait(), 0);
}

TEST_F(ProcessLife, WithoutItsBusTheAgentEndsThoughADialogIsOpen) {
  agent_.Start();
  agent_.HoldDialogs();
  agent_.Bus().OpenFiles({agent_.URI(OpenableFile("a.cr", {Store("s1", "One")}))});
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return agent_.Dialogs().size() == 1; }));
  agent_.EndBus();
  EXPECT_EQ(agent_.WaitForEnd(), 1);
}

class CheckIn : public ProcessLife, public testing::WithParamInterface<const char*> {
 protected:
  [[nodiscard]] std::string Failure(const std::string& reason) const {
    return std::string("bootstrap_check_in() failed for service '") + GetParam() + "'. Error: " + reason +
           "\n";
  }
};

INSTANTIATE_TEST_SUITE_P(, CheckIn, testing::Values("com.morvane.Beacons", "com.morvane.ServiceRecords"),
                         [](const auto& name) { return std::string(name.param).substr(12); });

TEST_P(CheckIn, OfANameThatHasAnotherOwnerEndsTheAgentBeforeItOpensAnything) {
  agent_.EnableLog();
  agent_.Write("home/Library/Logs/ServiceRecord.log", "the owner's log\n");
  agent_.Bus().OwnName(GetParam());
  auto agent = agent_.Run({}, {.captureErrors = true});
  EXPECT_EQ(agent.Wait(), 1);
  EXPECT_THAT(agent.Output(), HasSubstr(Failure("the name has another owner")));
  EXPECT_EQ(std::filesystem::file_size(agent_.LogFile()), 16U);
  EXPECT_FALSE(std::filesystem::exists(agent_.LogFile().string() + "BUP"));
  EXPECT_FALSE(std::filesystem::exists(agent_.StoresFile().parent_path()));
}

TEST_P(CheckIn, OfANameThatTheBusDeniesEndsTheAgentWithTheReason) {
  agent_.DenyName(GetParam());
  auto agent = agent_.Run({}, {.captureErrors = true});
  EXPECT_EQ(agent.Wait(), 1);
  EXPECT_THAT(agent.Output(), HasSubstr(Failure("Permission denied")));
}

TEST_F(ProcessLife, ASecondAgentLeavesTheLogToTheFirst) {
  agent_.EnableLog();
  agent_.Start();
  EXPECT_EQ(agent_.Run().Wait(), 1);
  Open("/nowhere/at/all.cr");
  const std::vector<std::string> messages = agent_.LogMessages();
  EXPECT_EQ(messages.front(), "Service Records Logging Active (v1.0.0)");
  EXPECT_THAT(messages, testing::Contains("...Failed to read SR file."));
  EXPECT_FALSE(std::filesystem::exists(agent_.LogFile().string() + "BUP"));
}

TEST_F(ProcessLife, WithoutALoggingPreferenceThereIsNoLogFile) {
  agent_.Start();
  EXPECT_EQ(agent_.Bus().ServiceRecords("allStores"), nlohmann::json::array());
  EXPECT_FALSE(std::filesystem::exists(agent_.Home() / "Library"));
}

TEST_F(ProcessLife, TheLoggingNotificationTurnsTheLogOnAtRunTime) {
  agent_.Start();
  agent_.EnableLog();
  agent_.Bus().PostNotification("com.morvane.quillon.ServiceRecordsLoggingConfigurationDidChange", "anybody");
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return !agent_.LogMessages().empty(); }));
  EXPECT_EQ(agent_.LogMessages().front(), "Service Records Logging Active (v1.0.0)");
  std::ifstream log(agent_.LogFile());
  std::string first;
  std::string banner;
  std::getline(log, first);
  std::getline(log, banner);
  EXPECT_EQ(first, "");
  EXPECT_THAT(banner, testing::StartsWith(" === Morvane Quillon logging started "));
}

TEST_F(ProcessLife, ARunningClientIsBroughtForward) {
  int activations = 0;
  agent_.Bus().OfferApplication("/com/morvane/quillon/velt", activations);
  agent_.Bus().OwnName("com.morvane.quillon.velt");
  agent_.Start();
  Open(OpenableFile("a.cr", {Store("s1", "One")}));
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return activations == 1; }));
}

TEST_F(ProcessLife, AClientThatDoesNotRunIsLaunched) {
  const auto launched = agent_.Home() / "launched";
  agent_.Write("home/.local/share/applications/com.morvane.quillon.velt.desktop",
               "[Desktop Entry]\nType=Application\nName=Client\nExec=touch " + launched.string() + "\n");
  agent_.Start();
  Open(OpenableFile("a.cr", {Store("s1", "One")}));
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return std::filesystem::exists(launched); }));
}

TEST_F(ProcessLife, NothingOfALaunchStaysWithTheAgentOrIsInheritedByTheClient) {
  const auto report = agent_.Home() / "report";
  const std::string draft = report.string() + ".new";
  const auto script = agent_.Write(
      "client", "#!/bin/sh\nexec >" + draft +
                    "\npwd; cut -d' ' -f6 /proc/$$/stat\n"
                    // The shell itself reads: while it waits for a program, signals are blocked.
                    "while read -r name value; do case $name in SigBlk:|SigIgn:) echo $value ;; esac; done "
                    "</proc/$$/status\n"
                    "ls -m /proc/$$/fd; cat /proc/$$/limits; mv " +
                    draft + " " + report.string() + "\n");
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  agent_.Write("home/.local/share/applications/com.morvane.quillon.velt.desktop",
               "[Desktop Entry]\nType=Application\nName=Client\nExec=" + script.string() + "\n");
  agent_.Start();
  const std::string agent = "/proc/" + std::to_string(agent_.Pid()) + "/";
  const std::string limits = Content(agent + "limits");
  const std::vector<std::string> threads = ForeignThreads();
  Open(OpenableFile("a.cr", {Store("s1", "One")}));
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return std::filesystem::exists(report); }));

  std::ifstream lines(report);
  std::vector<std::string> head(5);
  for (std::string& line : head) std::getline(lines, line);
  EXPECT_EQ(head[0], agent_.Home().string());
  EXPECT_NE(head[1], std::to_string(::getsid(agent_.Pid())));
  constexpr unsigned long long kOrdinarySignals = 0x7FFFFFFF;  // not those of the C library
  EXPECT_EQ(std::stoull(head[2], nullptr, 16) & kOrdinarySignals, 0U) << "blocked";
  EXPECT_EQ(std::stoull(head[3], nullptr, 16) & kOrdinarySignals, 0U) << "ignored";
  EXPECT_THAT(head[4], testing::AnyOf("0, 1, 10, 2", "0, 1, 2, 255")) << "with the script's own";
  EXPECT_EQ((std::string{std::istreambuf_iterator<char>(lines), {}}), limits);

  EXPECT_EQ(Content(agent + "limits"), limits);
  EXPECT_EQ(std::filesystem::read_symlink(agent + "cwd"), agent_.BundleFolder() / "Resources");
  EXPECT_EQ(ForeignThreads(), threads);
  const std::string children = agent + "task/" + std::to_string(agent_.Pid()) + "/children";
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return Content(children).empty(); })) << "all have been reaped";
}

TEST_F(ProcessLife, WithoutStandardDescriptorsTheirNumbersGoToNoFileOfTheAgent) {
  const TestSupport::ChildProcess agent({"sh", "-c", "exec \"$0\" <&- >&- 2>&-", Program()},
                                        agent_.Environment());
  ASSERT_TRUE(agent_.Bus().WaitUntilOwned("com.morvane.ServiceRecords", true));
  for (const char* number : {"0", "1", "2"}) {
    EXPECT_EQ(std::filesystem::read_symlink("/proc/" + std::to_string(agent.Pid()) + "/fd/" + number),
              "/dev/null");
  }
}

TEST_F(ProcessLife, TheAgentTakesTheAssociationBackFromAnotherHandler) {
  const auto associations = agent_.ConfigFolder() / "mimeapps.list";
  agent_.Write("home/.local/share/applications/other.desktop",
               "[Desktop Entry]\nType=Application\nName=Other\nExec=true %f\n"
               "MimeType=application/vnd.morvane.servicerecord+xml;\n");
  agent_.Write("home/.config/mimeapps.list",
               "[Default Applications]\napplication/vnd.morvane.servicerecord+xml=other.desktop\n");
  agent_.Start();
  std::ifstream file(associations);
  const std::string content{std::istreambuf_iterator<char>(file), {}};
  EXPECT_THAT(content,
              HasSubstr("application/vnd.morvane.servicerecord+xml=com.morvane.ServiceRecords.desktop"));
}

TEST_F(ProcessLife, AnAssociationThatIsOursIsNotWrittenAgain) {
  const auto associations = agent_.ConfigFolder() / "mimeapps.list";
  agent_.Write("home/.config/mimeapps.list",
               "# the user's own\n[Default Applications]\n"
               "application/vnd.morvane.servicerecord+xml=com.morvane.ServiceRecords.desktop\n");
  const auto before = std::filesystem::last_write_time(associations);
  agent_.Start();
  EXPECT_EQ(std::filesystem::last_write_time(associations), before);
}

TEST_F(ProcessLife, FilesOfTheUserAreReadableByNobodyElse) {
  agent_.EnableLog();
  agent_.Start();
  Open(OpenableFile("a.cr", {Store("s1", "One")}));
  using std::filesystem::perms;
  EXPECT_EQ(std::filesystem::status(agent_.StoresFile()).permissions(),
            perms::owner_read | perms::owner_write);
  EXPECT_EQ(std::filesystem::status(agent_.LogFile()).permissions(), perms::owner_read | perms::owner_write);
  EXPECT_EQ(std::filesystem::status(agent_.StoresFile().parent_path()).permissions(), perms::owner_all);
}

}  // namespace
