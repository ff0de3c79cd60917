#include "agent/OpenedFilesTest.h"
#include "libs/Files/FileDescriptor.h"
#include "libs/Files/WholeContent.h"
#include "support/PseudoTerminal.h"
#include "support/ServiceManager.h"
#include "support/TestFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;
using TestSupport::OpeningClient;
using TestSupport::PseudoTerminal;

namespace {

TEST_F(OpenedFiles, ACallerHearsWhatBecameOfItsFileBehindWhatEverybodyHears) {
  Start();
  OpeningClient other(agent_.BusAddress());
  const auto finished = client_->OpenAndAwait(OneStore());
  EXPECT_EQ(finished.outcome, "added");
  ASSERT_EQ(finished.stores.size(), 1U);
  EXPECT_THAT(finished.stores[0],
              UnorderedElementsAre(Pair("StoreID", "s1"), Pair("StoreName", "One"),
                                   Pair("StoreURL", Store("s1", "").url), Pair("Outcome", "added")));
  EXPECT_THAT(client_->Told(), ElementsAre("added s1", "confirmed s1", "finished added"));
  EXPECT_EQ(CountNotifications(), 1U);

  ASSERT_TRUE(other.WaitUntil([&] { return other.Told().size() == 2; }));
  const std::uint64_t second = other.Open("/nowhere.cr");
  EXPECT_GT(second, finished.id);
  other.Await(second);
  EXPECT_THAT(other.Told(), ElementsAre("added s1", "confirmed s1", "finished not-a-service-record"))
      << "the first one's end is nobody else's";
}

TEST_F(OpenedFiles, EachStoreHasItsOutcomeAndTheGravestIsTheWholes) {
  Start();
  client_->OpenAndAwait(OneStore());
  auto bad = Store("s2", "Two");
  bad.gateways.clear();
  bad.url = "https://localhost:1/nobody";
  const auto finished =
      client_->OpenAndAwait(OpenableFile("b.cr", {Store("s1", "Newer"), bad, Store("s3", "Three")}));
  EXPECT_EQ(finished.outcome, "server-not-verified");
  ASSERT_EQ(finished.stores.size(), 3U);
  EXPECT_EQ(finished.stores[0].at("Outcome"), "replaced");
  EXPECT_EQ(finished.stores[1].at("Outcome"), "server-not-verified");
  EXPECT_EQ(finished.stores[1].at("Reason"), "The server could not be reached.");
  EXPECT_EQ(finished.stores[2].at("Outcome"), "added");
}

TEST_F(OpenedFiles, AFileThatCannotBeReadIsToldWithTheReason) {
  Start();
  const std::filesystem::path withoutEnd = agent_.Home() / "loop.cr";
  std::filesystem::create_symlink(withoutEnd, withoutEnd);
  const std::filesystem::path socket = agent_.Home() / "socket.cr";
  ASSERT_EQ(::mknod(socket.c_str(), S_IFSOCK | 0600, 0), 0);
  for (const auto& [file, reason] :
       {std::pair<std::string, std::string>("/nowhere/at all.cr", "There is no such file."),
        {agent_.Home().string(), "It is not a file that holds a document."},
        {socket.string(), "It is not a file that holds a document."},
        {withoutEnd.string(), "Reading the file failed (error " + std::to_string(ELOOP) + ")."}}) {
    const auto finished = client_->OpenAndAwait(file);
    EXPECT_EQ(finished.outcome, "not-a-service-record");
    EXPECT_THAT(finished.stores, ElementsAre(ElementsAre(Pair("Reason", reason))));
  }
  EXPECT_THAT(client_->OpenAndAwait(agent_.Write("no.cr", "no document").string()).stores, IsEmpty());
}

TEST_F(OpenedFiles, ANoAndNobodyToAskAreToldApart) {
  for (const auto& [answer, outcome] :
       {std::pair("declined", "declined"), std::pair("no display", "could-not-ask")}) {
    SCOPED_TRACE(answer);
    agent_.Answer("addStore", answer);
    if (!client_) Start();
    EXPECT_EQ(client_->OpenAndAwait(OneStore()).outcome, outcome);
  }
  agent_.Answer("addStore", "accepted");
  EXPECT_EQ(client_->OpenAndAwait(OneStore()).outcome, "added");
  for (const auto& [answer, outcome] :
       {std::pair("declined", "declined"), std::pair("no display", "could-not-ask")}) {
    agent_.Answer("replaceStore", answer);
    EXPECT_EQ(client_->OpenAndAwait(OneStore()).outcome, outcome);
  }
}

TEST_F(OpenedFiles, TheDesktopOfACallGoesBeforeTheAgentsAndNothingButADesktopIsTaken) {
  ScriptWindows();
  Start({"DISPLAY=:1", "XAUTHORITY=/agents"});
  EXPECT_EQ(client_
                ->OpenAndAwait(OneStore(), {{"WAYLAND_DISPLAY", "wayland-5"},
                                            {"LANGUAGE", "de"},
                                            {"LD_PRELOAD", "/evil.so"},
                                            {"GTK_MODULES", "evil"},
                                            {"", "LD_PRELOAD=/evil.so"}})
                .outcome,
            "added");
  EXPECT_THAT(WindowVariables(), AllOf(Contains("WAYLAND_DISPLAY=wayland-5"), Contains("LANGUAGE=de"),
                                       Not(Contains("DISPLAY=:1")), Not(Contains("XAUTHORITY=/agents")),
                                       Not(Contains(HasSubstr("evil")))));
}

TEST_F(OpenedFiles, ALanguageOfACallLeadsToNoOtherFoldersTexts) {
  ScriptWindows();
  Start();
  client_->OpenAndAwait(OneStore(), {{"DISPLAY", ":3"},
                                     {"XAUTHORITY", "/callers"},
                                     {"LANGUAGE", "de:../../../tmp/evil"},
                                     {"LC_ALL", "../evil"},
                                     {"LC_MESSAGES", "/evil"},
                                     {"LANG", "evil/"}});
  EXPECT_THAT(WindowVariables(), AllOf(Contains("DISPLAY=:3"), Contains("XAUTHORITY=/callers"),
                                       Not(Contains(HasSubstr("evil")))));
}

TEST_F(OpenedFiles, WithoutADisplayInTheCallTheAgentsIsUsed) {
  ScriptWindows();
  Start({"DISPLAY=:1"});
  EXPECT_EQ(client_->OpenAndAwait(OneStore(), {{"LANGUAGE", "de"}, {"DISPLAY", ""}}).outcome, "added");
  EXPECT_THAT(WindowVariables(), AllOf(Contains("DISPLAY=:1"), Not(Contains("LANGUAGE=de"))));
}

TEST_F(OpenedFiles, WithoutADesktopInTheCallTheOneThatTheServiceManagerKnowsIsUsed) {
  ScriptWindows();
  Start({"DISPLAY=:1"});
  const TestSupport::ServiceManager manager(agent_.BusAddress(), {"LD_PRELOAD=/evil.so", "DISPLAY=:2"});
  EXPECT_EQ(client_->OpenAndAwait(OneStore()).outcome, "added");
  EXPECT_THAT(WindowVariables(), AllOf(Contains("DISPLAY=:2"), Not(Contains(HasSubstr("evil")))));
  EXPECT_EQ(client_->OpenAndAwait(OneStore("b.cr"), {{"DISPLAY", ":3"}}).outcome, "replaced");
  EXPECT_THAT(WindowVariables(), Contains("DISPLAY=:3"));
}

TEST_F(OpenedFiles, WhatIsNoDesktopIsRefused) {
  Start();
  Bus::Options options;
  options["desktop"] = Files::FileDescriptor(::open("/dev/null", O_RDWR | O_CLOEXEC));
  const auto refused = client_->TryOpen(OneStore(), options);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.Failure().name, "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(OpenedFiles, WithoutAPlugInNobodyCanBeAsked) {
  std::filesystem::remove_all(agent_.BundleFolder() / "PlugIns");
  Start();
  EXPECT_EQ(client_->OpenAndAwait(OneStore()).outcome, "could-not-ask");
}

TEST_F(OpenedFiles, WhatCannotBeWrittenIsNotSaved) {
  FillDisk();
  Start();
  const auto finished = client_->OpenAndAwait(OneStore());
  EXPECT_EQ(finished.outcome, "not-saved");
  EXPECT_THAT(finished.stores[0].at("Reason"), HasSubstr("cannot be written"));
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

TEST_F(OpenedFiles, TheAgentsEndIsToldAsSuch) {
  Start();
  agent_.HoldDialogs();
  const std::uint64_t id = client_->Open(OneStore());
  ASSERT_TRUE(WaitForDialogs(1));
  EXPECT_EQ(agent_.Terminate(), 0);
  EXPECT_EQ(client_->Await(id).outcome, "ended");
}

TEST_F(OpenedFiles, TheFurtherKeysTellTheDialogsWhatTheyAreAbout) {
  Start();
  const std::string file = OneStore();
  const std::uint64_t id = client_->Open(file);
  client_->Await(id);
  client_->OpenAndAwait(OpenableFile("b.cr", {Store("s1", "Newer")}));
  auto bad = Store("s2", "Two");
  bad.url = "https://localhost:1/nobody";
  bad.gateways.clear();
  client_->OpenAndAwait(OpenableFile("c.cr", {bad}));
  ASSERT_TRUE(WaitForDialogs(4));  // trust; trust, replace; error

  const auto trust = agent_.Dialogs()[0].second;
  EXPECT_EQ(*trust.Find("OpeningID"), PropertyList::Value(id));
  EXPECT_EQ(*trust.Find("DocumentPath"), PropertyList::Value(file));
  EXPECT_EQ(*trust.Find("StoreHost"), PropertyList::Value("localhost"));
  EXPECT_EQ(trust.Find("StoreHostASCII"), nullptr);
  EXPECT_EQ(*trust.Find("VerifiedHost"), PropertyList::Value("localhost"));
  EXPECT_EQ(*trust.Find("VerifiedServer"), PropertyList::Value("gateway"));

  const auto replace = agent_.Dialogs()[2].second;
  const auto* const held = replace.Find("HeldStore")->As<PropertyList::Dictionary>();
  const auto* const incoming = replace.Find("NewStore")->As<PropertyList::Dictionary>();
  EXPECT_EQ(*held->Find("StoreName"), PropertyList::Value("One"));
  EXPECT_EQ(*incoming->Find("StoreName"), PropertyList::Value("Newer"));
  EXPECT_EQ(*held->Find("StoreURL"), PropertyList::Value(Store("s1", "").url));
  EXPECT_EQ(held->Find("StoreGateways")->As<PropertyList::Array>()->size(), 2U);
  EXPECT_EQ(*held->Find("InternalBeacons"),
            PropertyList::Value(PropertyList::Array{Store("s1", "").internalBeacons[0]}));
  EXPECT_EQ(*incoming->Find("ExternalBeacons"),
            PropertyList::Value(PropertyList::Array{Store("s1", "").externalBeacons[0]}));

  const auto error = agent_.Dialogs()[3].second;
  EXPECT_EQ(*error.Find("Server"), PropertyList::Value("localhost:1"));
  EXPECT_EQ(error.Find("ErrorReason"), nullptr) << "the message says as much";
  EXPECT_THAT(*error.Find("ErrorDetails")->As<std::string>(), HasSubstr("https://localhost:1: "));
}

TEST_F(OpenedFiles, TheReplaceQuestionTellsWhatTheListHoldsAfterwards) {
  using PropertyList::Array;
  using PropertyList::Dictionary;
  Start();
  client_->OpenAndAwait(OneStore());
  auto newer = Store("s1", "Newer");
  newer.gateways[0].isDefault = true;
  newer.gateways[1] = {.name = "New", .location = newer.url};
  newer.internalBeacons.clear();
  newer.externalBeacons.clear();
  const std::string file = OpenableFile("b.cr", {newer});
  Serve(newer, "no discovery document");
  client_->OpenAndAwait(file);
  ASSERT_TRUE(WaitForDialogs(4));  // trust; trust, replace, error

  const Dictionary replace = agent_.Dialogs()[2].second;
  const Dictionary& after = *replace.Find("NewStore")->As<Dictionary>();
  const auto listed = agent_.Bus().ServiceRecords("allStores")[0];
  EXPECT_EQ(listed["StoreName"], "Newer");
  EXPECT_EQ(*after.Find("StoreName"), PropertyList::Value("Newer"));
  const Array& gateways = *after.Find("StoreGateways")->As<Array>();
  ASSERT_EQ(gateways.size(), 3U);
  for (std::size_t i = 0; i < gateways.size(); ++i) {
    const Dictionary& gateway = *gateways[i].As<Dictionary>();
    for (const char* const key : {"GatewayName", "GatewayURL"}) {
      EXPECT_EQ(listed["StoreGateways"][i][key], *gateway.Find(key)->As<std::string>());
    }
    const bool isDefault = *gateway.Find("GatewayName") == PropertyList::Value("Head Office");
    EXPECT_EQ(listed["StoreGateways"][i]["IsDefault"], isDefault);
    EXPECT_EQ(*gateway.Find("IsDefault"), PropertyList::Value(isDefault));
  }
  const std::string saved = TestSupport::ReadFile(agent_.StoresFile());
  for (const auto& [key, beacons] : {std::pair("InternalBeacons", Store("s1", "").internalBeacons),
                                     {"ExternalBeacons", Store("s1", "").externalBeacons}}) {
    EXPECT_EQ(*after.Find(key), PropertyList::Value(Array{beacons[0]}));
    EXPECT_THAT(saved, HasSubstr("<string>" + beacons[0] + "</string>"));
  }
}

TEST_F(OpenedFiles, QuestionsAreAskedOnTheTerminalThatIsHandedOver) {
  AskOnTerminals();
  Start();
  PseudoTerminal terminal;
  const std::uint64_t id = client_->Open(OneStore(), Descriptor(terminal).Get());
  EXPECT_THAT(terminal.ReadUntil(kTrustQuestion), HasSubstr("One"));
  terminal.Type("yes\n");
  EXPECT_EQ(client_->Await(id).outcome, "added");
}

TEST_F(OpenedFiles, ErrorsStandOnThatTerminalBeforeTheCallerHearsOfTheEnd) {
  AskOnTerminals();
  Start();
  PseudoTerminal terminal;
  const Files::FileDescriptor descriptor = Descriptor(terminal);
  auto bad = Store("s1", "One");
  bad.gateways.clear();
  bad.url = "https://localhost:1/nobody";
  client_->Await(client_->Open(OpenableFile("a.cr", {bad}), descriptor.Get()));
  ASSERT_FALSE(Files::WriteAll(descriptor.Get(), "heard").error);
  EXPECT_THAT(terminal.ReadUntil("heard"), HasSubstr("This server could not be contacted"));
}

TEST_F(OpenedFiles, WhatIsNoTerminalIsRefused) {
  Start();
  const Files::FileDescriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
  const auto refused = client_->TryOpen(OneStore(), nothing.Get());
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.Failure().name, "org.freedesktop.DBus.Error.InvalidArgs");
  EXPECT_THAT(agent_.Dialogs(), IsEmpty());
}

TEST_F(OpenedFiles, ACallerThatLeavesWithdrawsItsQuestionAndLeavesTheTerminalAsItWas) {
  AskOnTerminals();
  Start();
  PseudoTerminal terminal;
  terminal.MakeRaw();
  const tcflag_t before = terminal.Mode().c_lflag;
  AskOn(terminal);
  EXPECT_NE(terminal.Mode().c_lflag, before);
  const std::size_t during = DescriptorsOfAgent();
  client_.reset();
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return DescriptorsOfAgent() < during; }));
  EXPECT_TRUE(WaitForMode(terminal, before));
  EXPECT_THAT(StoreIDs(), IsEmpty());
}

TEST_F(OpenedFiles, ACallerThatLeavesIsAskedNothingMore) {
  Start();
  agent_.HoldDialogs();
  static_cast<void>(client_->Open(OpenableFile("a.cr", {Store("s1", "One"), Store("s2", "Two")})));
  ASSERT_TRUE(WaitForDialogs(1));
  const std::size_t during = DescriptorsOfAgent();
  client_.reset();
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return DescriptorsOfAgent() < during; }));
  EXPECT_EQ(agent_.Terminate(), 0);
  EXPECT_EQ(agent_.Dialogs().size(), 1U);
}

TEST_F(OpenedFiles, AnotherCallersQuestionStaysOpen) {
  Start();
  agent_.HoldDialogs();
  OpeningClient other(agent_.BusAddress());
  const std::uint64_t kept = other.Open(OneStore());
  ASSERT_TRUE(WaitForDialogs(1));
  static_cast<void>(client_->Open(OpenableFile("b.cr", {Store("s2", "Two")})));
  ASSERT_TRUE(WaitForDialogs(2));
  const int withdrawn = agent_.DialogProcesses().back();
  client_.reset();
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return ::kill(withdrawn, 0) != 0; }));
  EXPECT_FALSE(other.HasFinished(kept));
  agent_.Release("accepted");
  EXPECT_EQ(other.Await(kept).outcome, "added");
}

TEST_F(OpenedFiles, TheTerminalIsAsItWasWhenTheAgentIsKilled) {
  AskOnTerminals();
  Start();
  PseudoTerminal terminal;
  terminal.MakeRaw();
  const tcflag_t before = terminal.Mode().c_lflag;
  AskOn(terminal);
  EXPECT_NE(terminal.Mode().c_lflag, before);
  ::kill(agent_.Pid(), SIGKILL);
  EXPECT_TRUE(agent_.Bus().WaitUntilOwned("com.morvane.ServiceRecords", false));
  EXPECT_EQ(agent_.WaitForEnd(), 128 + SIGKILL);
  EXPECT_TRUE(WaitForMode(terminal, before));
}

TEST_F(OpenedFiles, TheAgentIsStoppedByNoTerminalForItHasASessionOfItsOwn) {
  Start();
  EXPECT_EQ(::getsid(agent_.Pid()), agent_.Pid());
}

TEST_F(OpenedFiles, NoDescriptorIsLeftBehind) {
  agent_.Answer("addStore", "declined");
  Start();
  const PseudoTerminal terminal;
  const Files::FileDescriptor descriptor = Descriptor(terminal);
  client_->Await(client_->Open("/nowhere.cr", descriptor.Get()));
  const std::size_t before = DescriptorsOfAgent();
  for (int round = 0; round < 10; ++round) {
    std::vector<std::uint64_t> openings;
    for (int i = 0; i < 10; ++i) openings.push_back(client_->Open("/nowhere.cr", descriptor.Get()));
    for (const std::uint64_t id : openings) client_->Await(id);
  }
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return DescriptorsOfAgent() <= before; }));
}

class ManyOpenings : public OpenedFiles {
 protected:
  ManyOpenings() : descriptor_(Descriptor(terminal_)) {
    agent_.HoldDialogs();
    Start();
  }

  // Files that stay open until the caller leaves.
  void Open(OpeningClient& caller, int count) {
    for (int i = 0; i < count; ++i) static_cast<void>(caller.Open(file_, descriptor_.Get()));
  }
  void ExpectRefusal(OpeningClient& caller) {
    const auto refused = caller.TryOpen(file_, descriptor_.Get());
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.Failure().name, "org.freedesktop.DBus.Error.LimitsExceeded");
  }
  [[nodiscard]] std::size_t TerminalsOfAgent() const {
    std::size_t count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(agent_.Pid()) + "/fd")) {
      std::error_code closedMeanwhile;
      if (std::filesystem::read_symlink(entry, closedMeanwhile) == terminal_.Path()) ++count;
    }
    return count;
  }
  // A dialog that is being started has a copy for a moment.
  [[nodiscard]] bool WaitForTerminals(std::size_t count) {
    return agent_.Bus().WaitUntil([&] { return TerminalsOfAgent() == count; });
  }

  const std::string file_ = OneStore();
  PseudoTerminal terminal_;
  Files::FileDescriptor descriptor_;
};

TEST_F(ManyOpenings, OneCallerHasSixteenAtATime) {
  Open(*client_, 16);
  for (int i = 0; i < 3; ++i) ExpectRefusal(*client_);
  EXPECT_TRUE(WaitForTerminals(16)) << "what came with a refused call is closed";
  OpeningClient other(agent_.BusAddress());
  Open(other, 1);

  client_.emplace(agent_.BusAddress());
  ASSERT_TRUE(WaitForTerminals(1));
  Open(*client_, 16);
  ExpectRefusal(*client_);
}

TEST_F(ManyOpenings, AllCallersTogetherHaveSixtyFour) {
  std::vector<std::unique_ptr<OpeningClient>> callers;
  for (int i = 0; i < 4; ++i) {
    callers.push_back(std::make_unique<OpeningClient>(agent_.BusAddress()));
    Open(*callers.back(), 16);
  }
  ExpectRefusal(*client_);
  EXPECT_TRUE(WaitForTerminals(64));

  callers.pop_back();
  ASSERT_TRUE(WaitForTerminals(48));
  Open(*client_, 1);
}

TEST_F(OpenedFiles, ChangesFromElsewhereAreToldToo) {
  Start();
  client_->OpenAndAwait(OneStore());
  agent_.Bus().ServiceRecords("setDefaultGatewayForStoreIDTo", {"s1", "Branch"});
  agent_.Bus().ServiceRecords("deleteStore", {"s1"});
  ASSERT_TRUE(client_->WaitUntil([&] { return client_->Changes().size() == 4; }));
  const auto& chosen = client_->Changes()[2];
  EXPECT_THAT(chosen, UnorderedElementsAre(Pair("Change", "default-gateway"), Pair("StoreID", "s1"),
                                           Pair("StoreName", "One"), Pair("StoreURL", Store("s1", "").url),
                                           Pair("GatewayName", "Branch")));
  EXPECT_EQ(client_->Changes()[3].at("Change"), "deleted");
  EXPECT_EQ(client_->Changes()[3].at("StoreName"), "One");
}

}  // namespace
