#include "ui/DialogModuleTest.h"

#include "libs/Files/FileDescriptor.h"
#include "support/EnvironmentVariable.h"
#include "support/PseudoTerminal.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <future>
#include <string>

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using TestSupport::PseudoTerminal;

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

TEST_F(DialogModuleTest, AWindowIsOnTheDesktopThatTheHostGivesAndOnNoOther) {
  module_.Bundle().ScriptWindowProgram(
      "readRequest; [ \"$DISPLAY|${WAYLAND_DISPLAY-}|${XAUTHORITY-}|$LANG\" = ':8|||de' ] && echo accepted");
  module_.Bundle().ScriptDialogProgram("readRequest; echo declined");
  const std::array desktop{"DISPLAY=:8", "LANG=de", static_cast<const char*>(nullptr)};
  SRUIHost host = module_.Host();
  host.desktop = desktop.data();
  EXPECT_EQ(module_.EntryPointsFor(host)->addStore(kDetails), 1);

  const TestSupport::EnvironmentVariable wayland("WAYLAND_DISPLAY", "wayland-0");
  const TestSupport::EnvironmentVariable authority("XAUTHORITY", "/nowhere");
  EXPECT_EQ(module_.EntryPointsFor(host)->addStore(kDetails), 1);
  EXPECT_NE(module_.EntryPoints().addStore(kDetails), 1) << "the next call's is another";
}

TEST_F(DialogModuleTest, WhereTheDesktopThatTheHostGivesHasEndedAWindowIsOnTheProcesssOwn) {
  module_.Bundle().ScriptWindowProgram(
      "readRequest; echo $DISPLAY >>asked; [ $DISPLAY = :7 ] && echo accepted || echo no display");
  module_.Bundle().ScriptDialogProgram("readRequest; echo declined");
  EXPECT_EQ(AddStoreOn({"DISPLAY=:8"}), 0);
  const TestSupport::EnvironmentVariable display("DISPLAY", ":7");
  EXPECT_EQ(AddStoreOn({"DISPLAY=:8"}), 1);
  EXPECT_EQ(ContentOf(module_.Bundle().File("asked")), ":8\n:8\n:7\n");
}

TEST_F(DialogModuleTest, ADesktopOnWhichNoWindowCanBeShownIsTriedOnce) {
  module_.Bundle().ScriptWindowProgram("readRequest; echo $DISPLAY >>asked; echo no display");
  module_.Bundle().ScriptDialogProgram("readRequest; echo accepted");
  const TestSupport::EnvironmentVariable display("DISPLAY", ":7");
  const TestSupport::EnvironmentVariable authority("XAUTHORITY", "/nowhere");
  Display::Variables own = Display::OfThisProcess();
  std::ranges::reverse(own);
  EXPECT_EQ(AddStoreOn(own), 1);
  EXPECT_EQ(ContentOf(module_.Bundle().File("asked")), ":7\n");
}

TEST_F(DialogModuleTest, AHostOfTheSecondVersionHasNoDesktopToGive) {
  struct SecondHost {
    std::uint32_t version;
    int descriptors[3];
    std::uintptr_t behind;  // not of the structure
  } second{2, {module_.Host().terminationDescriptor, -1, -1}, 1};
  module_.Bundle().ScriptDialogProgram("readRequest; echo accepted");

  const SRUIProtocol* entryPoints = module_.EntryPointsFor(reinterpret_cast<const SRUIHost&>(second));

  ASSERT_NE(entryPoints, nullptr);
  EXPECT_EQ(entryPoints->addStore(kDetails), 1);
}

TEST_F(DialogModuleTest, AHostOfTheFirstVersionHasNoContextToGive) {
  struct FirstHost {
    std::uint32_t version;
    int terminationDescriptor;
    int behind[4];  // not of the structure
  } first{1, module_.Host().terminationDescriptor, {0, STDIN_FILENO, 1, 0}};
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
