#include "agent/OpenedFilesTest.h"
#include "support/NotificationService.h"
#include "support/ServiceManager.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using TestSupport::NotificationService;
using TestSupport::PseudoTerminal;

namespace {

class Notices : public OpenedFiles {
 protected:
  Notices() : desktop_(agent_.BusAddress()) {}

  void StartLogging() {
    logging_.emplace(agent_.Run({}, {.captureErrors = true}));
    ASSERT_TRUE(agent_.Bus().WaitUntilOwned("com.morvane.ServiceRecords", true));
  }
  // Until the agent that logs has ended, which it does now.
  void ExpectLoggedOnce(const std::string& line) {
    logging_->Signal(SIGTERM);
    EXPECT_EQ(logging_->Wait(), 0);
    const std::string logged = logging_->Output();
    const std::size_t at = logged.find(line);
    ASSERT_NE(at, std::string::npos) << logged;
    EXPECT_EQ(logged.find(line, at + 1), std::string::npos) << logged;
  }
  [[nodiscard]] std::filesystem::path Launched() const { return agent_.Home() / "launched"; }
  // A client that notes the display that it is launched on.
  void InstallClient() {
    agent_.Write("home/.local/share/applications/com.morvane.quillon.velt.desktop",
                 "[Desktop Entry]\nType=Application\nName=Client\nExec=sh -c \"printenv DISPLAY >" +
                     Launched().string() + "\"\n");
  }
  [[nodiscard]] std::string AwaitLaunchDisplay() {
    std::string display;
    EXPECT_TRUE(agent_.Bus().WaitUntil([&] {
      std::ifstream file(Launched());
      return static_cast<bool>(std::getline(file, display));
    }));
    return display;
  }

  NotificationService desktop_;

 private:
  std::optional<TestSupport::ChildProcess> logging_;
};

TEST_F(Notices, AnAddedStoreIsToldAndCanBeShownWhereThereIsNoClient) {
  Start();
  client_->OpenAndAwait(OneStore());
  ASSERT_TRUE(desktop_.WaitUntil([&] { return desktop_.Shown().size() == 1; }));
  EXPECT_EQ(desktop_.Shown()[0].summary, "One was added");
  EXPECT_EQ(desktop_.Shown()[0].body, "");
  EXPECT_EQ(desktop_.Shown()[0].desktopEntry, "com.morvane.ServiceRecords.Stores");
  EXPECT_THAT(desktop_.Shown()[0].actions, ElementsAre("default", "Show", "show-store", "Show"));
  desktop_.Press("show-store");
  ASSERT_TRUE(desktop_.WaitUntil([&] { return desktop_.Opened().size() == 1; }));
  EXPECT_THAT(desktop_.Opened(), ElementsAre(Pair("s1", "token")));
  client_->OpenAndAwait(OneStore());
  ASSERT_TRUE(desktop_.WaitUntil([&] { return desktop_.Shown().size() == 2; }));
  EXPECT_EQ(desktop_.Shown()[1].summary, "One was updated");
}

TEST_F(Notices, NobodyButTheNotificationServiceSaysThatOneWasPressed) {
  Start();
  client_->OpenAndAwait(OneStore());
  ASSERT_TRUE(desktop_.WaitUntil([&] { return desktop_.Shown().size() == 1; }));
  desktop_.Forge(agent_.BusAddress(), "show-store");
  desktop_.Press("show-store");
  ASSERT_TRUE(desktop_.WaitUntil([&] { return !desktop_.Opened().empty(); }));
  EXPECT_THAT(desktop_.Opened(), ElementsAre(Pair("s1", "token")));
}

TEST_F(Notices, AClientThatComesForwardNeedsNoNotification) {
  int activations = 0;
  agent_.Bus().OfferApplication("/com/morvane/quillon/velt", activations);
  agent_.Bus().OwnName("com.morvane.quillon.velt");
  Start();
  client_->OpenAndAwait(OneStore());
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return activations == 1; }));
  agent_.Answer("addStore", "no display");
  client_->OpenAndAwait(OpenableFile("b.cr", {Store("s2", "Two")}));
  ASSERT_TRUE(desktop_.WaitUntil([&] { return !desktop_.Shown().empty(); }));
  EXPECT_EQ(desktop_.Shown()[0].summary, "b.cr was not opened") << "the first one";
}

TEST_F(Notices, NeitherDoesAClientThatCanBeLaunched) {
  agent_.Write("home/.local/share/applications/com.morvane.quillon.velt.desktop",
               "[Desktop Entry]\nType=Application\nName=Client\nExec=touch " + Launched().string() + "\n");
  Start();
  client_->OpenAndAwait(OneStore());
  ASSERT_TRUE(agent_.Bus().WaitUntil([&] { return std::filesystem::exists(Launched()); }));
  agent_.Answer("addStore", "no display");
  client_->OpenAndAwait(OpenableFile("b.cr", {Store("s2", "Two")}));
  ASSERT_TRUE(desktop_.WaitUntil([&] { return !desktop_.Shown().empty(); }));
  EXPECT_EQ(desktop_.Shown()[0].summary, "b.cr was not opened") << "the first one";
}

TEST_F(Notices, AClientIsLaunchedOnTheDesktopOfTheCall) {
  InstallClient();
  Start();
  client_->OpenAndAwait(OneStore(), {{"DISPLAY", ":8"}});
  EXPECT_EQ(AwaitLaunchDisplay(), ":8");
}

TEST_F(Notices, WhoeverIsAskedOnATerminalIsNotLookedForElsewhere) {
  InstallClient();
  const PseudoTerminal terminal;
  const Files::FileDescriptor descriptor = Descriptor(terminal);
  Start({"DISPLAY=:1"});
  const TestSupport::ServiceManager manager(agent_.BusAddress(), {"DISPLAY=:2"});
  client_->Await(client_->Open(OneStore(), descriptor.Get()));
  EXPECT_EQ(AwaitLaunchDisplay(), ":1");
}

TEST_F(Notices, SeveralStoresAreToldTogether) {
  Start();
  client_->OpenAndAwait(OpenableFile("a.cr", {Store("s1", "One"), Store("s2", "Two")}));
  ASSERT_TRUE(desktop_.WaitUntil([&] { return desktop_.Shown().size() == 1; }));
  EXPECT_EQ(desktop_.Shown()[0].summary, "2 stores were added or updated");
}

TEST_F(Notices, StoresThatCouldNotBeSavedAreNotToldAsAdded) {
  FillDisk();
  Start();
  client_->OpenAndAwait(OneStore());
  client_->OpenAndAwait(OpenableFile("b.cr", {Store("s2", "Two"), Store("s3", "Three")}));
  ASSERT_TRUE(desktop_.WaitUntil([&] { return desktop_.Shown().size() == 2; }));
  EXPECT_EQ(desktop_.Shown()[0].summary, "One is in the list, but not saved");
  EXPECT_THAT(desktop_.Shown()[0].body, HasSubstr("cannot be written"));
  EXPECT_THAT(desktop_.Shown()[0].actions, Contains("show-store"));
  EXPECT_EQ(desktop_.Shown()[1].summary, "2 stores are in the list, but not saved");
}

TEST_F(Notices, ANameHidesNothingAndEndsSomewhere) {
  Start();
  client_->OpenAndAwait(OpenableFile("a.cr", {Store("s1", "One\u202E\u200Beno")}));
  client_->OpenAndAwait(OpenableFile("b.cr", {Store("s2", std::string(300, 'x'))}));
  client_->OpenAndAwait(OpenableFile("c.cr", {Store("s3", "\u05D0")}));
  ASSERT_TRUE(desktop_.WaitUntil([&] { return desktop_.Shown().size() == 3; }));
  EXPECT_EQ(desktop_.Shown()[0].summary, "One<U+202E><U+200B>eno was added");
  EXPECT_EQ(desktop_.Shown()[1].summary, "\u2068" + std::string(200, 'x') + "\u2026\u2069 was added");
  EXPECT_EQ(desktop_.Shown()[2].summary, "\u2068\u05D0\u2069 was added");
}

TEST_F(Notices, AFileAboutWhichNobodyCouldBeAskedIsToldAndLoggedOnce) {
  agent_.Answer("addStore", "no display");
  StartLogging();
  const std::string file = OpenableFile("Stores.cr", {Store("s1", "One"), Store("s2", "Two")});
  agent_.Bus().OpenFiles({agent_.URI(file)});
  ASSERT_TRUE(desktop_.WaitUntil([&] { return desktop_.Shown().size() == 1; }));
  EXPECT_EQ(desktop_.Shown()[0].summary, "Stores.cr was not opened");
  EXPECT_THAT(desktop_.Shown()[0].body, HasSubstr("srctl doctor"));
  EXPECT_THAT(desktop_.Shown()[0].actions, IsEmpty());
  ExpectLoggedOnce("\"" + file + "\" was not opened: nobody could be asked");
}

TEST_F(Notices, AFileThatCannotBeReadIsToldAndLoggedOnce) {
  StartLogging();
  const std::string file = agent_.Home() / "Missing.cr";
  agent_.Bus().OpenFiles({agent_.URI(file)});
  ASSERT_TRUE(desktop_.WaitUntil([&] { return desktop_.Shown().size() == 1; }));
  EXPECT_EQ(desktop_.Shown()[0].summary, "Missing.cr could not be read");
  EXPECT_THAT(desktop_.Shown()[0].body, HasSubstr("that you may read it"));
  EXPECT_THAT(desktop_.Shown()[0].actions, IsEmpty());
  EXPECT_THAT(agent_.Dialogs(), IsEmpty());
  ExpectLoggedOnce("\"" + file + "\" was not opened: the file cannot be read");
}

TEST_F(Notices, AFileThatIsNoServiceRecordHasADialogAndNoNotification) {
  Start();
  client_->OpenAndAwait(agent_.Write("a.cr", "no document"));
  client_->OpenAndAwait("/nowhere.cr");
  ASSERT_TRUE(desktop_.WaitUntil([&] { return !desktop_.Shown().empty(); }));
  EXPECT_EQ(desktop_.Shown()[0].summary, "nowhere.cr could not be read") << "the first one";
}

TEST_F(Notices, AFileWhoseNameIsNotUTF8IsTold) {
  Start();
  agent_.Bus().OpenFiles({"file:///Store%F6.cr"});
  ASSERT_TRUE(desktop_.WaitUntil([&] { return desktop_.Shown().size() == 1; }));
  EXPECT_EQ(desktop_.Shown()[0].summary, "Store.cr could not be read");
  EXPECT_THAT(desktop_.Shown()[0].body, HasSubstr("is not UTF-8"));
}

}  // namespace
