#include "libs/Files/FileDescriptor.h"
#include "support/CapturedSyslog.h"
#include "support/PseudoTerminal.h"
#include "ui/DialogModuleTest.h"

#include <sys/eventfd.h>

#include <chrono>
#include <functional>
#include <future>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;
using TestSupport::PseudoTerminal;

constexpr const char* kMessage =
    "<plist version=\"1.0\"><dict><key>ErrorTitle</key><string>Bad file</string>"
    "<key>ErrorMessage</key><string>It cannot be read.</string></dict></plist>";

// A box that tells which program shows what.
constexpr const char* kShowsMessages =
    "while read -r word version dialog size; do\n"
    "details=$(head -c \"$size\"); text=${details##*<key>ErrorMessage</key><string>}\n"
    "echo \"$$ ${text%%<*}\" >event; echo accepted; done";

// What the module shows as an error, in boxes and on a terminal.
class ErrorMessageTest : public DialogModuleTest {
 protected:
  void ShowError(int opening, const std::string& text) const {
    module_.EntryPoints().errorMessage(
        ("<plist version=\"1.0\"><dict><key>OpeningID</key><integer>" + std::to_string(opening) +
         "</integer><key>ErrorMessage</key><string>" + text + "</string></dict></plist>")
            .c_str());
  }

  void ShowErrorOn(const PseudoTerminal& terminal, int withdrawal = -1) const {
    const Files::FileDescriptor given(::open(terminal.Path().c_str(), O_RDWR | O_NOCTTY));
    SRUIHost host = module_.Host();
    host.terminalDescriptor = given.Get();
    host.withdrawalDescriptor = withdrawal;
    module_.EntryPointsFor(host)->errorMessage(kMessage);
  }

  void ExpectWaitingErrorToEnd(const PseudoTerminal& terminal, int withdrawal,
                               const std::function<void()>& end) {
    MakeEventPipe();
    module_.Bundle().ScriptDialogProgram("readRequest; echo $$ >event; read -r never");
    const auto shown = std::async(std::launch::async, [&] { ShowErrorOn(terminal, withdrawal); });
    const pid_t id = std::stoi(NextEvent());

    end();

    shown.wait();
    EXPECT_TRUE(IsGone(id));
    EXPECT_THAT(syslog_.TakeLines(), IsEmpty()) << "nobody wants to know any more";
  }

  // Nothing tells when the place of a closed box is free again. A message that got none is in the log.
  [[nodiscard]] bool ShowsErrorBoxSoon() {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < deadline) {
      module_.EntryPoints().errorMessage(kDetails);
      if (syslog_.TakeLines().empty()) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
  }

  // Nothing tells when another thread has written a line.
  std::string NextLogLine() {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < deadline) {
      if (const std::vector<std::string> lines = syslog_.TakeLines(); !lines.empty()) return lines[0];
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return {};
  }

  // Nothing tells when another thread has reaped a process.
  static bool IsGoneSoon(pid_t id) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!IsGone(id) && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return IsGone(id);
  }

  TestSupport::CapturedSyslog syslog_;
};

TEST_F(ErrorMessageTest, AnErrorBoxStaysOpenAfterTheCallAndClosesOnTermination) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram(
      "readRequest; echo \"$dialog\" >event; echo $$ >event; read -r never; echo closed >event");

  module_.EntryPoints().errorMessage(kDetails);

  EXPECT_EQ(NextEvent(), "errorMessage\n");
  const pid_t id = std::stoi(NextEvent());
  EXPECT_EQ(ContentOf(module_.Bundle().File("details")), kDetails);
  EXPECT_FALSE(IsGone(id));
  module_.RequestTermination();
  EXPECT_EQ(NextEvent(), "closed\n");
  EXPECT_TRUE(IsGoneSoon(id));
}

TEST_F(ErrorMessageTest, AnErrorBoxThatTheUserClosesLeavesNoProcessBehind) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo $$ >event; echo accepted");

  module_.EntryPoints().errorMessage(kDetails);

  EXPECT_TRUE(IsGoneSoon(std::stoi(NextEvent())));
}

TEST_F(ErrorMessageTest, FourErrorBoxesAreOpenAtATimeAndTheRestIsLogged) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo $$ >event; read -r never");
  const char* const details =
      "<plist version=\"1.0\"><dict><key>ErrorTitle</key><string>Bad\tfile</string>"
      "<key>ErrorMessage</key><string>The first line\nand the &lt;second&gt;</string></dict></plist>";

  for (int i = 0; i < 300; ++i) module_.EntryPoints().errorMessage(details);

  std::set<pid_t> boxes;
  for (int i = 0; i < 4; ++i) boxes.insert(std::stoi(NextEvent()));
  EXPECT_EQ(boxes.size(), 4U);
  EXPECT_EQ(boxes.count(0), 0U);
  EXPECT_FALSE(HasEvent());
  EXPECT_THAT(syslog_.TakeLines(),
              AllOf(SizeIs(296), Each("Too many error messages are open for this one: Bad\xEF\xBF\xBD"
                                      "file: The first line and the <second>")));
}

TEST_F(ErrorMessageTest, AnErrorBoxThatIsClosedMakesPlaceForAnother) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo accepted; echo $$ >event; read -r never");
  for (int i = 0; i < 3; ++i) module_.EntryPoints().errorMessage(kDetails);
  for (int i = 0; i < 3; ++i) static_cast<void>(NextEvent());

  for (int i = 0; i < 8; ++i) {
    ASSERT_TRUE(ShowsErrorBoxSoon());
    const pid_t box = std::stoi(NextEvent());
    ASSERT_GT(box, 0);
    ::kill(box, SIGKILL);
    EXPECT_TRUE(IsGoneSoon(box));
  }
}

TEST_F(ErrorMessageTest, ErrorBoxesThatCannotBeStartedTakeNoPlace) {
  for (int i = 0; i < 8; ++i) {
    module_.EntryPoints().errorMessage(kMessage);
    EXPECT_THAT(NextLogLine(), StartsWith("This error message could not be shown"));
  }
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo $$ >event; read -r never");

  for (int i = 0; i < 4; ++i) module_.EntryPoints().errorMessage(kDetails);

  for (int i = 0; i < 4; ++i) ASSERT_NE(NextEvent(), "");
  EXPECT_THAT(syslog_.TakeLines(), IsEmpty());
}

TEST_F(ErrorMessageTest, AnErrorMessageWithoutADisplayIsLogged) {
  module_.Bundle().ScriptDialogProgram("readRequest; echo no display");

  module_.EntryPoints().errorMessage(kMessage);

  EXPECT_EQ(NextLogLine(), "This error message could not be shown: Bad file: It cannot be read.");
}

TEST_F(ErrorMessageTest, WhatIsLoggedSaysWhyAndWhatItIsAbout) {
  module_.Bundle().ScriptDialogProgram("readRequest; echo no display");

  module_.EntryPoints().errorMessage(
      "<plist version=\"1.0\"><dict><key>ErrorTitle</key><string>Not verified</string>"
      "<key>ErrorMessage</key><string>This server:\nhttps://a.example\nAsk.</string>"
      "<key>ErrorReason</key><string>It is another server's:\nb.example</string>"
      "<key>StoreName</key><string>Sa\u202Eles</string><key>Server</key><string>a.example:443</string>"
      "<key>DocumentPath</key><string>/home/mia/a\nb.cr</string></dict></plist>");

  EXPECT_EQ(NextLogLine(),
            "This error message could not be shown: Not verified: This server: https://a.example Ask. It is "
            "another server's: b.example (store \"Sa\uFFFDles\", server \"a.example:443\", file "
            "\"/home/mia/a\uFFFDb.cr\")");
}

TEST_F(ErrorMessageTest, OnTerminationThereIsNoErrorMessageAnyMore) {
  module_.RequestTermination();

  module_.EntryPoints().errorMessage(kMessage);

  EXPECT_THAT(syslog_.TakeLines(), IsEmpty());
}

TEST_F(ErrorMessageTest, AnErrorMessageThatWasShownIsNotLogged) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo $$ >event; echo accepted");

  module_.EntryPoints().errorMessage(kMessage);

  EXPECT_TRUE(IsGoneSoon(std::stoi(NextEvent())));
  EXPECT_THAT(syslog_.TakeLines(), IsEmpty());
}

TEST_F(ErrorMessageTest, AnErrorBoxThatCannotBeStartedLeavesNoProcessBehindAndIsLogged) {
  module_.EntryPoints().errorMessage(nullptr);
  module_.EntryPoints().errorMessage(kMessage);

  EXPECT_EQ(NextLogLine(), "This error message could not be shown: Bad file: It cannot be read.");
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(ErrorMessageTest, TheErrorMessagesOfOneOpeningGatherInOneBox) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram(kShowsMessages);

  for (const char* const text : {"one", "two", "three"}) ShowError(7, text);

  const std::string first = NextEvent();
  const std::string program = first.substr(0, first.find(' '));
  EXPECT_EQ(first, program + " one\n");
  EXPECT_EQ(NextEvent(), program + " two\n");
  EXPECT_EQ(NextEvent(), program + " three\n");
}

TEST_F(ErrorMessageTest, AnotherOpeningsErrorMessageHasABoxOfItsOwn) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram(kShowsMessages);

  ShowError(7, "one");
  const pid_t first = std::stoi(NextEvent());
  ShowError(8, "two");
  EXPECT_NE(std::stoi(NextEvent()), first);
  ShowError(7, "three");
  EXPECT_EQ(std::stoi(NextEvent()), first);
}

TEST_F(ErrorMessageTest, AnErrorMessageThatComesAsTheBoxClosesIsShownInAnother) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram(
      "readRequest; echo \"$$ $(cat details)\" >event; echo accepted; read -r next");

  ShowError(7, "one");
  const std::string first = NextEvent();
  ShowError(7, "two");
  const std::string second = NextEvent();

  EXPECT_THAT(first, HasSubstr("one"));
  EXPECT_THAT(second, AllOf(HasSubstr("two"), Not(StartsWith(first.substr(0, first.find(' ') + 1)))));
  EXPECT_THAT(syslog_.TakeLines(), IsEmpty());
}

TEST_F(ErrorMessageTest, ABoxThatWasClosedIsOpenedAgainForTheNextMessageOfItsOpening) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo accepted; echo $$ >event");

  for (int i = 0; i < 8; ++i) {
    ShowError(7, "again");
    EXPECT_TRUE(IsGoneSoon(std::stoi(NextEvent())));
  }
}

TEST_F(ErrorMessageTest, OneOpeningHasAtMost32ErrorMessages) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram(kShowsMessages);

  for (int i = 0; i < 35; ++i) ShowError(7, "text");

  for (int i = 0; i < 32; ++i) EXPECT_NE(NextEvent(), "");
  EXPECT_THAT(syslog_.TakeLines(),
              AllOf(SizeIs(3), Each("Too many error messages are open for this one: : text")));
  EXPECT_FALSE(HasEvent());
}

TEST_F(ErrorMessageTest, AnErrorMessageStandsOnTheTerminalThatIsGivenOnceTheCallReturns) {
  const PseudoTerminal terminal;
  module_.Bundle().ScriptDialogProgram(
      "readRequest; echo $$ >id; readlink /proc/$$/fd/3 >shown; echo accepted; read -r never");

  ShowErrorOn(terminal);

  EXPECT_EQ(ContentOf(module_.Bundle().File("shown")), terminal.Path() + "\n");
  EXPECT_TRUE(IsGone(std::stoi(ContentOf(module_.Bundle().File("id")))));
  EXPECT_THAT(syslog_.TakeLines(), IsEmpty());
}

TEST_F(ErrorMessageTest, AnErrorMessageThatTheGivenTerminalCannotShowIsLogged) {
  const PseudoTerminal terminal;
  module_.Bundle().ScriptDialogProgram("readRequest; echo no display");

  ShowErrorOn(terminal);

  EXPECT_THAT(syslog_.TakeLines(),
              ElementsAre("This error message could not be shown: Bad file: It cannot be read."));
}

TEST_F(ErrorMessageTest, AnErrorMessageThatWaitsForTheGivenTerminalEndsWithTheWithdrawal) {
  const PseudoTerminal terminal;
  const Files::FileDescriptor withdrawal(::eventfd(0, EFD_CLOEXEC));
  ExpectWaitingErrorToEnd(terminal, withdrawal.Get(), [&] { ::eventfd_write(withdrawal.Get(), 1); });
}

TEST_F(ErrorMessageTest, AnErrorMessageThatWaitsForTheGivenTerminalEndsOnTermination) {
  const PseudoTerminal terminal;
  ExpectWaitingErrorToEnd(terminal, -1, [this] { module_.RequestTermination(); });
}

}  // namespace
