#include "libs/Files/FileDescriptor.h"
#include "support/CapturedSyslog.h"
#include "support/EnvironmentVariable.h"
#include "support/PseudoTerminal.h"
#include "ui/LoadedModule.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <set>
#include <string>
#include <thread>

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

constexpr const char* kDetails = "<plist version=\"1.0\"><dict/></plist>";
constexpr const char* kMessage =
    "<plist version=\"1.0\"><dict><key>ErrorTitle</key><string>Bad file</string>"
    "<key>ErrorMessage</key><string>It cannot be read.</string></dict></plist>";

// A box that tells which program shows what.
constexpr const char* kShowsMessages =
    "while read -r word version dialog size; do\n"
    "details=$(head -c \"$size\"); text=${details##*<key>ErrorMessage</key><string>}\n"
    "echo \"$$ ${text%%<*}\" >event; echo accepted; done";

bool IsGone(pid_t id) {
  return ::kill(id, 0) != 0 && errno == ESRCH;
}

class DialogModuleTest : public ::testing::Test {
 protected:
  int AnswerOfProgram(const std::string& script) {
    module_.Bundle().ScriptDialogProgram(script);
    return module_.EntryPoints().addStore(kDetails);
  }

  // The answer to a question that this thread asks for a host with that context.
  [[nodiscard]] int AddStoreFor(int terminal, int withdrawal) const {
    SRUIHost host = module_.Host();
    host.terminalDescriptor = terminal;
    host.withdrawalDescriptor = withdrawal;
    return module_.EntryPointsFor(host)->addStore(kDetails);
  }

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
    static_cast<void>(CapturedSyslog::TakeLines());
    const auto shown = std::async(std::launch::async, [&] { ShowErrorOn(terminal, withdrawal); });
    const pid_t id = std::stoi(NextEvent());

    end();

    shown.wait();
    EXPECT_TRUE(IsGone(id));
    EXPECT_THAT(CapturedSyslog::TakeLines(), IsEmpty()) << "nobody wants to know any more";
  }

  // A named pipe through which the dialog program tells that it has got somewhere.
  void MakeEventPipe() {
    ASSERT_EQ(::mkfifo(module_.Bundle().File("event").c_str(), 0600), 0);
    event_ = ::open(module_.Bundle().File("event").c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    ASSERT_GE(event_, 0);
  }

  // The next line that the program wrote into the pipe.
  [[nodiscard]] std::string NextEvent() const {
    std::string line;
    char next = '\0';
    pollfd state{event_, POLLIN, 0};
    while (next != '\n' && ::poll(&state, 1, 30000) > 0 && ::read(event_, &next, 1) == 1) line += next;
    return line;
  }

  // Whether the program has written more than was taken.
  [[nodiscard]] bool HasEvent() const {
    pollfd state{event_, POLLIN, 0};
    return ::poll(&state, 1, 0) > 0;
  }

  // Nothing tells when the place of a closed box is free again. A message that got none is in the log.
  [[nodiscard]] bool ShowsErrorBoxSoon() const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < deadline) {
      module_.EntryPoints().errorMessage(kDetails);
      if (CapturedSyslog::TakeLines().empty()) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
  }

  // Nothing tells when another thread has written a line.
  static std::string NextLogLine() {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < deadline) {
      if (const std::vector<std::string> lines = CapturedSyslog::TakeLines(); !lines.empty()) return lines[0];
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return {};
  }

  void TearDown() override {
    if (event_ >= 0) ::close(event_);
  }

  LoadedModule module_;
  int event_ = -1;
};

// Nothing tells when another thread has reaped a process.
bool IsGoneSoon(pid_t id) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!IsGone(id) && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return IsGone(id);
}

TEST_F(DialogModuleTest, AcceptsWhenTheProgramRepliesThatTheUserAccepted) {
  EXPECT_EQ(AnswerOfProgram("readRequest; echo accepted"), 1);
}

TEST_F(DialogModuleTest, DeclinesWhenTheProgramRepliesThatTheUserDeclined) {
  EXPECT_EQ(AnswerOfProgram("readRequest; echo declined"), 0);
}

TEST_F(DialogModuleTest, NobodyWasAskedWithoutADisplayOrByAProgramThatDoesNotUnderstand) {
  EXPECT_EQ(AnswerOfProgram("readRequest; echo 'no display'"), SRUI_COULD_NOT_ASK);
  EXPECT_EQ(AnswerOfProgram("readRequest; echo 'unknown request'"), SRUI_COULD_NOT_ASK);
}

TEST_F(DialogModuleTest, ARequestHasAVersionedHeaderAndTheWholeDictionary) {
  const std::string details =
      "<plist version=\"1.0\"><string>M\xC3\xBCnchen \xF0\x9F\x8F\xAA</string></plist>\n\n";
  module_.Bundle().ScriptDialogProgram(
      "readRequest; echo \"$word|$version|$dialog|$size\" >header; echo accepted");

  EXPECT_EQ(module_.EntryPoints().addStore(details.c_str()), 1);
  EXPECT_EQ(ContentOf(module_.Bundle().File("header")),
            "ServiceRecordUI|1|addStore|" + std::to_string(details.size()) + "\n");
  EXPECT_EQ(ContentOf(module_.Bundle().File("details")), details);
}

TEST_F(DialogModuleTest, TheReplaceDialogIsARequestOfItsOwn) {
  module_.Bundle().ScriptDialogProgram("readRequest; echo \"$dialog\" >header; echo accepted");

  EXPECT_EQ(module_.EntryPoints().replaceStore(kDetails), 1);
  EXPECT_EQ(ContentOf(module_.Bundle().File("header")), "replaceStore\n");
}

TEST_F(DialogModuleTest, ALargeDictionaryArrivesWhole) {
  const std::string details(3'000'000, 'x');
  module_.Bundle().ScriptDialogProgram("readRequest; echo accepted");

  EXPECT_EQ(module_.EntryPoints().addStore(details.c_str()), 1);
  EXPECT_EQ(ContentOf(module_.Bundle().File("details")), details);
}

TEST_F(DialogModuleTest, AProgramThatDoesNotReadItsRequestMayStillReply) {
  const std::string details(3'000'000, 'x');
  module_.Bundle().ScriptDialogProgram("exec 0<&-; echo accepted");

  EXPECT_EQ(module_.EntryPoints().addStore(details.c_str()), 1);
}

TEST_F(DialogModuleTest, AProgramThatDiesWithoutAReplyMeansThatNobodyWasAsked) {
  EXPECT_EQ(AnswerOfProgram("exit 0"), SRUI_COULD_NOT_ASK);
  EXPECT_EQ(AnswerOfProgram("readRequest; exit 3"), SRUI_COULD_NOT_ASK);
  EXPECT_EQ(AnswerOfProgram("readRequest; kill -KILL $$"), SRUI_COULD_NOT_ASK);
}

TEST_F(DialogModuleTest, AProgramThatDiesMeansThatNobodyWasAskedEvenWhenAChildKeepsItsOutputOpen) {
  EXPECT_EQ(AnswerOfProgram("readRequest; { read -r never <&3; } 3<&0 & exit 0"), SRUI_COULD_NOT_ASK);
}

TEST_F(DialogModuleTest, AReplyThatIsCutOffMeansThatNobodyWasAsked) {
  EXPECT_EQ(AnswerOfProgram("readRequest; printf accepted"), SRUI_COULD_NOT_ASK);
  EXPECT_EQ(AnswerOfProgram("readRequest; printf accep; kill -KILL $$"), SRUI_COULD_NOT_ASK);
}

TEST_F(DialogModuleTest, AnyOtherOutputMeansThatNobodyWasAsked) {
  EXPECT_EQ(AnswerOfProgram("readRequest; echo"), SRUI_COULD_NOT_ASK);
  EXPECT_EQ(AnswerOfProgram("readRequest; echo Accepted"), SRUI_COULD_NOT_ASK);
  EXPECT_EQ(AnswerOfProgram("readRequest; echo 'accepted '"), SRUI_COULD_NOT_ASK);
  EXPECT_EQ(AnswerOfProgram("readRequest; printf 'noise\\naccepted\\n'"), SRUI_COULD_NOT_ASK);
  EXPECT_EQ(AnswerOfProgram("readRequest; printf 'accepted\\0\\n'"), SRUI_COULD_NOT_ASK);
}

TEST_F(DialogModuleTest, AnOverlongReplyMeansThatNobodyWasAsked) {
  EXPECT_EQ(AnswerOfProgram("readRequest; printf '%1000s' x; echo; echo accepted"), SRUI_COULD_NOT_ASK);
  EXPECT_EQ(AnswerOfProgram("readRequest; while printf x; do :; done"), SRUI_COULD_NOT_ASK);
}

TEST_F(DialogModuleTest, AProgramThatHangsUpMeansThatNobodyWasAskedAndEnds) {
  EXPECT_EQ(AnswerOfProgram("readRequest; echo $$ >id; exec >&-; read -r never"), SRUI_COULD_NOT_ASK);
  EXPECT_TRUE(IsGone(std::stoi(ContentOf(module_.Bundle().File("id")))));
}

TEST_F(DialogModuleTest, AProgramThatCannotBeStartedMeansThatNobodyWasAsked) {
  EXPECT_EQ(module_.EntryPoints().addStore(kDetails), SRUI_COULD_NOT_ASK);
  std::ofstream(module_.Bundle().File("servicerecord-dialog")) << "#!/bin/bash\necho accepted\n";
  EXPECT_EQ(module_.EntryPoints().addStore(kDetails), SRUI_COULD_NOT_ASK);
}

TEST_F(DialogModuleTest, NoDictionaryMeansThatNobodyWasAsked) {
  module_.Bundle().ScriptDialogProgram("echo accepted");

  EXPECT_EQ(module_.EntryPoints().addStore(nullptr), SRUI_COULD_NOT_ASK);
  EXPECT_EQ(module_.EntryPoints().replaceStore(nullptr), SRUI_COULD_NOT_ASK);
}

TEST_F(DialogModuleTest, AnOpenDialogClosesAsDeclinedOnTermination) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo $$ >event; read -r never; echo accepted");
  OpenDialog dialog = module_.AddStore(kDetails);
  const pid_t id = std::stoi(NextEvent());

  module_.RequestTermination();

  EXPECT_EQ(dialog.Answer(), 0);
  EXPECT_TRUE(IsGone(id));
}

TEST_F(DialogModuleTest, AProgramThatStaysOnIsKilledOnTermination) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram(
      "readRequest; mkfifo silent; echo $$ >event; while :; do read -r <>silent; done");
  OpenDialog dialog = module_.AddStore(kDetails);
  const pid_t id = std::stoi(NextEvent());

  module_.RequestTermination();

  EXPECT_EQ(dialog.Answer(), 0);
  EXPECT_TRUE(IsGone(id));
}

TEST_F(DialogModuleTest, SeveralDialogsMayBeOpenAtOnce) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram(
      "read -r word version dialog size; details=$(head -c \"$size\"); echo \"$details\" >event\n"
      "[ \"$details\" = quick ] && echo accepted && exit; read -r never");
  OpenDialog open = module_.AddStore("slow");
  ASSERT_EQ(NextEvent(), "slow\n");

  EXPECT_EQ(module_.EntryPoints().addStore("quick"), 1);

  EXPECT_TRUE(open.IsOpen());
  module_.RequestTermination();
  EXPECT_EQ(open.Answer(), 0);
}

TEST_F(DialogModuleTest, TheProgramInheritsNothingButItsStandardDescriptors) {
  const int leaked = ::eventfd(0, 0);
  const int high = ::fcntl(leaked, F_DUPFD, 200);
  module_.Bundle().ScriptDialogProgram("readRequest; [ -e /proc/$$/fd/" + std::to_string(high) +
                                       " ] || echo accepted");

  EXPECT_EQ(module_.EntryPoints().addStore(kDetails), 1);
  ::close(leaked);
  ::close(high);
}

TEST_F(DialogModuleTest, AWithdrawnQuestionClosesAsDeclined) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo $$ >event; read -r never; echo accepted");
  const Files::FileDescriptor withdrawal(::eventfd(0, EFD_CLOEXEC));
  auto answer = std::async(std::launch::async, [&] { return AddStoreFor(-1, withdrawal.Get()); });
  const pid_t id = std::stoi(NextEvent());

  ::eventfd_write(withdrawal.Get(), 1);

  EXPECT_EQ(answer.get(), 0);
  EXPECT_TRUE(IsGone(id));
}

TEST_F(DialogModuleTest, AWithdrawalCountsForTheThreadThatGaveItAndUntilItsNextCall) {
  module_.Bundle().ScriptDialogProgram("readRequest; echo accepted");
  const Files::FileDescriptor withdrawn(::eventfd(1, EFD_CLOEXEC));

  const SRUIProtocol& entryPoints = module_.EntryPoints();
  EXPECT_EQ(AddStoreFor(-1, withdrawn.Get()), 0);
  EXPECT_EQ(entryPoints.addStore(kDetails), 0);
  EXPECT_EQ(std::async(std::launch::async, [&] { return entryPoints.addStore(kDetails); }).get(), 1);
  EXPECT_EQ(AddStoreFor(-1, -1), 1);
}

TEST_F(DialogModuleTest, TheTerminalProgramGetsTheTerminalThatIsGivenAndNoOtherDescriptor) {
  const PseudoTerminal terminal;
  const Files::FileDescriptor given(::open(terminal.Path().c_str(), O_RDWR | O_NOCTTY));
  module_.Bundle().ScriptWindowProgram("readRequest; echo declined");
  module_.Bundle().ScriptDialogProgram(
      "readRequest; [ \"$1\" = --terminal=3 ] && [ \"$(readlink /proc/$$/fd/3)\" = " + terminal.Path() +
      " ] && [ ! -e /proc/$$/fd/4 ] && echo accepted");
  const TestSupport::EnvironmentVariable display("DISPLAY", ":7");

  EXPECT_EQ(AddStoreFor(given.Get(), -1), 1);
}

TEST_F(DialogModuleTest, AWindowIsPreferredWhereThereMayBeADisplay) {
  module_.Bundle().ScriptWindowProgram("readRequest; echo accepted");
  module_.Bundle().ScriptDialogProgram("readRequest; echo declined");

  EXPECT_EQ(module_.EntryPoints().addStore(kDetails), 0);
  for (const char* const variable : {"DISPLAY", "WAYLAND_DISPLAY"}) {
    const TestSupport::EnvironmentVariable display(variable, "display");
    EXPECT_EQ(module_.EntryPoints().addStore(kDetails), 1);
  }
}

TEST_F(DialogModuleTest, ATerminalIsLookedForWhenThereIsNoDisplayAfterAll) {
  const TestSupport::EnvironmentVariable display("DISPLAY", ":7");
  module_.Bundle().ScriptDialogProgram("readRequest; echo accepted");

  EXPECT_EQ(module_.EntryPoints().addStore(kDetails), 1);
  module_.Bundle().ScriptWindowProgram("readRequest; echo no display");
  EXPECT_EQ(module_.EntryPoints().addStore(kDetails), 1);
}

TEST_F(DialogModuleTest, ATerminalIsLookedForWhenTheWindowBreaks) {
  const TestSupport::EnvironmentVariable display("DISPLAY", ":7");
  module_.Bundle().ScriptWindowProgram("exit 127");
  module_.Bundle().ScriptDialogProgram("readRequest; echo accepted");

  EXPECT_EQ(module_.EntryPoints().addStore(kDetails), 1);
}

TEST_F(DialogModuleTest, AWindowThatDoesNotUnderstandIsNotFollowedByAnotherQuestion) {
  const TestSupport::EnvironmentVariable display("DISPLAY", ":7");
  module_.Bundle().ScriptWindowProgram("readRequest; echo 'unknown request'");
  module_.Bundle().ScriptDialogProgram("readRequest; echo accepted");

  EXPECT_EQ(module_.EntryPoints().addStore(kDetails), SRUI_COULD_NOT_ASK);
}

TEST_F(DialogModuleTest, AWindowThatIsWithdrawnIsNotFollowedByAnotherQuestion) {
  const TestSupport::EnvironmentVariable display("DISPLAY", ":7");
  const Files::FileDescriptor withdrawn(::eventfd(1, EFD_CLOEXEC));
  module_.Bundle().ScriptWindowProgram("readRequest; read -r never");
  module_.Bundle().ScriptDialogProgram("echo asked >shown; readRequest; echo accepted");

  EXPECT_EQ(AddStoreFor(-1, withdrawn.Get()), 0);
  EXPECT_FALSE(std::filesystem::exists(module_.Bundle().File("shown")));
}

TEST_F(DialogModuleTest, AHostOfTheFirstVersionHasNoContextToGive) {
  struct FirstHost {
    std::uint32_t version;
    int terminationDescriptor;
    int behind[2];  // not of the structure
  } first{1, module_.Host().terminationDescriptor, {0, STDIN_FILENO}};
  module_.Bundle().ScriptDialogProgram("readRequest; [ $# = 0 ] && echo accepted");

  const SRUIProtocol* entryPoints = module_.EntryPointsFor(reinterpret_cast<const SRUIHost&>(first));

  ASSERT_NE(entryPoints, nullptr);
  EXPECT_EQ(entryPoints->addStore(kDetails), 1);
}

TEST_F(DialogModuleTest, AHostWithoutAVersionIsNone) {
  SRUIHost host = module_.Host();
  host.version = 0;
  EXPECT_EQ(module_.EntryPointsFor(host), nullptr);
}

TEST_F(DialogModuleTest, TheProgramGetsNoArguments) {
  EXPECT_EQ(AnswerOfProgram("readRequest; [ $# = 0 ] && echo accepted"), 1);
}

TEST_F(DialogModuleTest, TheProgramStartsWithDefaultSignals) {
  sigset_t blocked;
  sigset_t before;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGUSR1);
  ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
  const auto pipeBefore = ::signal(SIGPIPE, SIG_IGN);

  const int ignoredDies =
      AnswerOfProgram("readRequest; (kill -PIPE $BASHPID; echo no) >died; [ -s died ] || echo accepted");
  const int blockedDies =
      AnswerOfProgram("readRequest; (kill -USR1 $BASHPID; echo no) >died; [ -s died ] || echo accepted");

  ::signal(SIGPIPE, pipeBefore);
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  EXPECT_EQ(ignoredDies, 1);
  EXPECT_EQ(blockedDies, 1);
}

TEST_F(DialogModuleTest, AnErrorBoxStaysOpenAfterTheCallAndClosesOnTermination) {
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

TEST_F(DialogModuleTest, AnErrorBoxThatTheUserClosesLeavesNoProcessBehind) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo $$ >event; echo accepted");

  module_.EntryPoints().errorMessage(kDetails);

  EXPECT_TRUE(IsGoneSoon(std::stoi(NextEvent())));
}

TEST_F(DialogModuleTest, FourErrorBoxesAreOpenAtATimeAndTheRestIsLogged) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo $$ >event; read -r never");
  const char* const details =
      "<plist version=\"1.0\"><dict><key>ErrorTitle</key><string>Bad\tfile</string>"
      "<key>ErrorMessage</key><string>The first line\nand the &lt;second&gt;</string></dict></plist>";
  static_cast<void>(CapturedSyslog::TakeLines());

  for (int i = 0; i < 300; ++i) module_.EntryPoints().errorMessage(details);

  std::set<pid_t> boxes;
  for (int i = 0; i < 4; ++i) boxes.insert(std::stoi(NextEvent()));
  EXPECT_EQ(boxes.size(), 4U);
  EXPECT_EQ(boxes.count(0), 0U);
  EXPECT_FALSE(HasEvent());
  EXPECT_THAT(CapturedSyslog::TakeLines(),
              AllOf(SizeIs(296), Each("Too many error messages are open for this one: Bad\xEF\xBF\xBD"
                                      "file: The first line\xEF\xBF\xBD"
                                      "and the <second>")));
}

TEST_F(DialogModuleTest, AnErrorBoxThatIsClosedMakesPlaceForAnother) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo accepted; echo $$ >event; read -r never");
  static_cast<void>(CapturedSyslog::TakeLines());
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

TEST_F(DialogModuleTest, ErrorBoxesThatCannotBeStartedTakeNoPlace) {
  static_cast<void>(CapturedSyslog::TakeLines());
  for (int i = 0; i < 8; ++i) {
    module_.EntryPoints().errorMessage(kMessage);
    EXPECT_THAT(NextLogLine(), StartsWith("This error message could not be shown"));
  }
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo $$ >event; read -r never");

  for (int i = 0; i < 4; ++i) module_.EntryPoints().errorMessage(kDetails);

  for (int i = 0; i < 4; ++i) ASSERT_NE(NextEvent(), "");
  EXPECT_THAT(CapturedSyslog::TakeLines(), IsEmpty());
}

TEST_F(DialogModuleTest, AnErrorMessageWithoutADisplayIsLogged) {
  module_.Bundle().ScriptDialogProgram("readRequest; echo no display");
  static_cast<void>(CapturedSyslog::TakeLines());

  module_.EntryPoints().errorMessage(kMessage);

  EXPECT_EQ(NextLogLine(), "This error message could not be shown: Bad file: It cannot be read.");
}

TEST_F(DialogModuleTest, OnTerminationThereIsNoErrorMessageAnyMore) {
  static_cast<void>(CapturedSyslog::TakeLines());
  module_.RequestTermination();

  module_.EntryPoints().errorMessage(kMessage);

  EXPECT_THAT(CapturedSyslog::TakeLines(), IsEmpty());
}

TEST_F(DialogModuleTest, AnErrorMessageThatWasShownIsNotLogged) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo $$ >event; echo accepted");
  static_cast<void>(CapturedSyslog::TakeLines());

  module_.EntryPoints().errorMessage(kMessage);

  EXPECT_TRUE(IsGoneSoon(std::stoi(NextEvent())));
  EXPECT_THAT(CapturedSyslog::TakeLines(), IsEmpty());
}

TEST_F(DialogModuleTest, AnErrorBoxThatCannotBeStartedLeavesNoProcessBehindAndIsLogged) {
  static_cast<void>(CapturedSyslog::TakeLines());

  module_.EntryPoints().errorMessage(nullptr);
  module_.EntryPoints().errorMessage(kMessage);

  EXPECT_EQ(NextLogLine(), "This error message could not be shown: Bad file: It cannot be read.");
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(DialogModuleTest, TheErrorMessagesOfOneOpeningGatherInOneBox) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram(kShowsMessages);

  for (const char* const text : {"one", "two", "three"}) ShowError(7, text);

  const std::string first = NextEvent();
  const std::string program = first.substr(0, first.find(' '));
  EXPECT_EQ(first, program + " one\n");
  EXPECT_EQ(NextEvent(), program + " two\n");
  EXPECT_EQ(NextEvent(), program + " three\n");
}

TEST_F(DialogModuleTest, AnotherOpeningsErrorMessageHasABoxOfItsOwn) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram(kShowsMessages);

  ShowError(7, "one");
  const pid_t first = std::stoi(NextEvent());
  ShowError(8, "two");
  EXPECT_NE(std::stoi(NextEvent()), first);
  ShowError(7, "three");
  EXPECT_EQ(std::stoi(NextEvent()), first);
}

TEST_F(DialogModuleTest, AnErrorMessageThatComesAsTheBoxClosesIsShownInAnother) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram(
      "readRequest; echo \"$$ $(cat details)\" >event; echo accepted; read -r next");
  static_cast<void>(CapturedSyslog::TakeLines());

  ShowError(7, "one");
  const std::string first = NextEvent();
  ShowError(7, "two");
  const std::string second = NextEvent();

  EXPECT_THAT(first, HasSubstr("one"));
  EXPECT_THAT(second, AllOf(HasSubstr("two"), Not(StartsWith(first.substr(0, first.find(' ') + 1)))));
  EXPECT_THAT(CapturedSyslog::TakeLines(), IsEmpty());
}

TEST_F(DialogModuleTest, ABoxThatWasClosedIsOpenedAgainForTheNextMessageOfItsOpening) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram("readRequest; echo accepted; echo $$ >event");

  for (int i = 0; i < 8; ++i) {
    ShowError(7, "again");
    EXPECT_TRUE(IsGoneSoon(std::stoi(NextEvent())));
  }
}

TEST_F(DialogModuleTest, OneOpeningHasAtMost32ErrorMessages) {
  MakeEventPipe();
  module_.Bundle().ScriptDialogProgram(kShowsMessages);
  static_cast<void>(CapturedSyslog::TakeLines());

  for (int i = 0; i < 35; ++i) ShowError(7, "text");

  for (int i = 0; i < 32; ++i) EXPECT_NE(NextEvent(), "");
  EXPECT_THAT(CapturedSyslog::TakeLines(),
              AllOf(SizeIs(3), Each("Too many error messages are open for this one: : text")));
  EXPECT_FALSE(HasEvent());
}

TEST_F(DialogModuleTest, AnErrorMessageStandsOnTheTerminalThatIsGivenOnceTheCallReturns) {
  const PseudoTerminal terminal;
  module_.Bundle().ScriptDialogProgram(
      "readRequest; echo $$ >id; readlink /proc/$$/fd/3 >shown; echo accepted; read -r never");
  static_cast<void>(CapturedSyslog::TakeLines());

  ShowErrorOn(terminal);

  EXPECT_EQ(ContentOf(module_.Bundle().File("shown")), terminal.Path() + "\n");
  EXPECT_TRUE(IsGone(std::stoi(ContentOf(module_.Bundle().File("id")))));
  EXPECT_THAT(CapturedSyslog::TakeLines(), IsEmpty());
}

TEST_F(DialogModuleTest, AnErrorMessageThatTheGivenTerminalCannotShowIsLogged) {
  const PseudoTerminal terminal;
  module_.Bundle().ScriptDialogProgram("readRequest; echo no display");
  static_cast<void>(CapturedSyslog::TakeLines());

  ShowErrorOn(terminal);

  EXPECT_THAT(CapturedSyslog::TakeLines(),
              ElementsAre("This error message could not be shown: Bad file: It cannot be read."));
}

TEST_F(DialogModuleTest, AnErrorMessageThatWaitsForTheGivenTerminalEndsWithTheWithdrawal) {
  const PseudoTerminal terminal;
  const Files::FileDescriptor withdrawal(::eventfd(0, EFD_CLOEXEC));
  ExpectWaitingErrorToEnd(terminal, withdrawal.Get(), [&] { ::eventfd_write(withdrawal.Get(), 1); });
}

TEST_F(DialogModuleTest, AnErrorMessageThatWaitsForTheGivenTerminalEndsOnTermination) {
  const PseudoTerminal terminal;
  ExpectWaitingErrorToEnd(terminal, -1, [this] { module_.RequestTermination(); });
}

TEST_F(DialogModuleTest, WithoutTheLibraryOfTheViewThereIsNone) {
  EXPECT_EQ(module_.EntryPoints().SRStoreDetailsViewWithDetailsDictionary(kDetails), nullptr);
}

TEST_F(DialogModuleTest, NoDialogBringsAToolkitIntoTheProcess) {
  module_.Bundle().ScriptDialogProgram("readRequest; echo accepted");

  EXPECT_EQ(module_.EntryPoints().addStore(kDetails), 1);
  EXPECT_EQ(module_.EntryPoints().replaceStore(kDetails), 1);
  module_.EntryPoints().errorMessage(kDetails);

  const std::string maps = ContentOf("/proc/self/maps");
  EXPECT_THAT(maps, HasSubstr("Module.so"));
  for (const char* const library : {"libgtk", "libadwaita", "libgdk", "libpango"}) {
    EXPECT_THAT(maps, Not(HasSubstr(library)));
  }
}

}  // namespace
