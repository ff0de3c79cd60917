#include "srctl/SrctlTest.h"
#include "srctl/StandInAgent.h"
#include "support/LoopbackListener.h"
#include "support/PseudoTerminal.h"
#include "support/TestFiles.h"
#include "support/VirtualScreen.h"

#include <csignal>
#include <filesystem>

using PropertyList::Dictionary;
using testing::HasSubstr;
using testing::Not;
using TestSupport::ChildProcess;
using TestSupport::PseudoTerminal;

namespace {

constexpr char kQuestion[] = "Add it? [y/N] ";

// A user who has logged on to a terminal, without a desktop.
class SrctlOnTerminal : public SrctlTest {
 protected:
  SrctlOnTerminal() : file_(OpenableFile("a.cr", {Store("s1", "One")})) {
    const std::filesystem::path program =
        "lib/servicerecords/PlugIns/ServiceRecordUI.bundle/servicerecord-dialog";
    std::filesystem::remove(agent_.Prefix() / program);
    std::filesystem::copy_file(std::filesystem::path(SR_STAGE_DIR) / program, agent_.Prefix() / program);
  }

  // With the terminal as the controlling one of a session of its own.
  [[nodiscard]] ChildProcess LogOn(const std::string& script) const {
    const std::string onTerminal = "exec setsid --ctty bash -c \"$0\" \"$1\" \"$2\" <\"$3\" >\"$3\" 2>&1";
    return ChildProcess({"env", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", "bash", "-c", onTerminal, script,
                         SR_STAGE_DIR "/bin/srctl", file_, terminal_.Path()},
                        agent_.Environment());
  }
  [[nodiscard]] ChildProcess Open() const { return LogOn("exec \"$0\" open \"$1\""); }

  PseudoTerminal terminal_;
  std::string file_;
};

TEST_F(SrctlOnTerminal, AsksThereWithoutAnyVariable) {
  ChildProcess srctl = Open();
  EXPECT_THAT(terminal_.ReadUntil(kQuestion), HasSubstr("One"));
  terminal_.Type("yes\n");
  EXPECT_EQ(srctl.Wait(), 0);
  EXPECT_THAT(terminal_.ReadNow(), HasSubstr("\"One\" (s1) was added."));
}

TEST_F(SrctlOnTerminal, AsksThereWhereTheDesktopThatIsNamedHasEnded) {
  for (const char* variable : {"DISPLAY=:59077", "WAYLAND_DISPLAY=wayland-77"}) {
    ChildProcess srctl = LogOn(std::string(variable) + " exec \"$0\" open \"$1\"");
    EXPECT_THAT(terminal_.ReadUntil(kQuestion), Not(HasSubstr("You are asked in a window.")));
    terminal_.Type("no\n");
    EXPECT_EQ(srctl.Wait(), 4);
  }
}

TEST_F(SrctlOnTerminal, AsksThereWhereTheDesktopThatIsNamedTakesConnectionsAndSaysNothing) {
  constexpr int kPortOfFirstDisplay = 6000;
  const TestSupport::LoopbackListener silent;
  const std::string display = "127.0.0.1:" + std::to_string(silent.port - kPortOfFirstDisplay);
  ChildProcess srctl = LogOn("DISPLAY=" + display + " exec \"$0\" open \"$1\"");
  static_cast<void>(terminal_.ReadUntil(kQuestion));
  terminal_.Type("no\n");
  EXPECT_EQ(srctl.Wait(), 4);
}

TEST_F(SrctlOnTerminal, AsksInAWindowOfADesktopThatShowsThem) {
  const TestSupport::VirtualScreen screen;
  ChildProcess srctl = LogOn("DISPLAY=" + screen.Display() + " GDK_BACKEND=x11 exec \"$0\" open \"$1\"");
  static_cast<void>(terminal_.ReadUntil("You are asked in a window. Ctrl+C withdraws the question."));
  terminal_.Type("\x03");
  EXPECT_EQ(srctl.Wait(), 128 + SIGINT);
}

TEST_F(SrctlOnTerminal, TheDoctorSaysThatOpeningAsksThere) {
  for (const char* display : {"", "DISPLAY=:59077 "}) {
    ChildProcess srctl = LogOn(display + std::string("exec \"$0\" doctor"));
    static_cast<void>(terminal_.ReadUntil("ok: questions: srctl open has you asked on this terminal.\r\n"));
    static_cast<void>(terminal_.ReadUntil("Nothing is wrong.\r\n"));
    EXPECT_EQ(srctl.Wait(), 0);
  }
}

TEST_F(SrctlOnTerminal, AsksThereAlsoWhenNothingElseLeadsThere) {
  ChildProcess srctl = LogOn("exec \"$0\" open \"$1\" </dev/null >/dev/null 2>&1");
  static_cast<void>(terminal_.ReadUntil(kQuestion));
  terminal_.Type("yes\n");
  EXPECT_EQ(srctl.Wait(), 0);
}

TEST_F(SrctlOnTerminal, AsksThereInsteadOfOnTheDesktopWhenToldTo) {
  ChildProcess srctl = LogOn("DISPLAY=:9 exec \"$0\" open --terminal \"$1\"");
  static_cast<void>(terminal_.ReadUntil(kQuestion));
  terminal_.Type("no\n");
  EXPECT_EQ(srctl.Wait(), 4);
}

TEST_F(SrctlOnTerminal, TheClientComesForwardOnTheDesktopAllTheSame) {
  const std::filesystem::path launched = agent_.Home() / "launched";
  agent_.Write("home/.local/share/applications/com.morvane.quillon.velt.desktop",
               "[Desktop Entry]\nType=Application\nName=Client\nExec=sh -c \"printenv DISPLAY >" +
                   launched.string() + "\"\n");
  ChildProcess srctl = LogOn("DISPLAY=:9 exec \"$0\" open --terminal \"$1\"");
  static_cast<void>(terminal_.ReadUntil(kQuestion));
  terminal_.Type("yes\n");
  EXPECT_EQ(srctl.Wait(), 0);
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] { return TestSupport::ReadFile(launched) == ":9\n"; }));
}

TEST_F(SrctlOnTerminal, HasTheLastWordWhereTheAgentTellsOfAnError) {
  auto bad = Store("s1", "One");
  bad.gateways.clear();
  bad.url = "https://localhost:1/nobody";
  file_ = OpenableFile("a.cr", {bad});
  const termios before = terminal_.MakeUnfit();
  ChildProcess srctl = Open();
  EXPECT_THAT(terminal_.ReadUntil("srctl: \"One\" (s1) was not added"),
              HasSubstr("This server could not be contacted"));
  EXPECT_EQ(srctl.Wait(), 5);
  EXPECT_EQ(terminal_.Mode().c_lflag, before.c_lflag);
}

TEST_F(SrctlOnTerminal, CtrlCWithdrawsTheQuestionAndLeavesTheTerminalAsItWas) {
  const termios before = terminal_.MakeUnfit();
  ChildProcess srctl = Open();
  static_cast<void>(terminal_.ReadUntil(kQuestion));
  EXPECT_NE(terminal_.Mode().c_lflag, before.c_lflag);
  EXPECT_NE(terminal_.Mode().c_iflag, before.c_iflag);
  terminal_.Type("\x03");
  EXPECT_EQ(srctl.Wait(), 128 + SIGINT) << "as a shell expects it";
  EXPECT_THAT(terminal_.ReadNow(), HasSubstr("srctl: The question was withdrawn."));
  const termios after = terminal_.Mode();
  EXPECT_EQ(after.c_lflag, before.c_lflag);
  EXPECT_EQ(after.c_iflag, before.c_iflag);
  EXPECT_TRUE(StoreIDs().empty());
}

TEST_F(SrctlOnTerminal, PutsTheTerminalsModeBackForADialogThatCannot) {
  StandInAgent standIn(agent_.BusAddress());
  ChildProcess srctl = Open();
  ASSERT_TRUE(standIn.ServeUntil([&] { return standIn.Opened().size() == 1; }));
  terminal_.MakeRaw();
  srctl.Signal(SIGINT);
  EXPECT_EQ(srctl.Wait(), 128 + SIGINT);
  EXPECT_NE(terminal_.Mode().c_lflag & ICANON, 0U);
}

TEST_F(SrctlOnTerminal, CtrlZStopsNothing) {
  ChildProcess shell = LogOn("set -m; \"$0\" open \"$1\"; echo status $?.");
  static_cast<void>(terminal_.ReadUntil(kQuestion));
  terminal_.Type("\x1A");
  terminal_.Type("yes\n");
  static_cast<void>(terminal_.ReadUntil("status 0."));
  EXPECT_EQ(shell.Wait(), 0);
}

TEST_F(SrctlOnTerminal, ACallFromTheBackgroundIsRefused) {
  ChildProcess shell = LogOn("set -m; \"$0\" open \"$1\" & wait $!; echo status $?");
  EXPECT_THAT(terminal_.ReadUntil("status 7"), HasSubstr("srctl: It runs in the background of its terminal"));
  EXPECT_EQ(shell.Wait(), 0);
}

TEST_F(SrctlOnTerminal, TheAgentsDeathLeavesTheTerminalAsItWas) {
  agent_.Start();
  const termios before = terminal_.MakeUnfit();
  ChildProcess srctl = Open();
  static_cast<void>(terminal_.ReadUntil(kQuestion));
  EXPECT_NE(terminal_.Mode().c_lflag, before.c_lflag);
  ::kill(agent_.Pid(), SIGKILL);
  EXPECT_EQ(srctl.Wait(), 9);
  EXPECT_EQ(terminal_.Mode().c_lflag, before.c_lflag);
}

TEST_F(SrctlOnTerminal, SaysWhereTheQuestionIsWhenItIsNotThere) {
  StandInAgent standIn(agent_.BusAddress());
  ChildProcess srctl = LogOn("exec \"$0\" open --window \"$1\"");
  ASSERT_TRUE(standIn.ServeUntil([&] { return standIn.Opened().size() == 1; }));
  EXPECT_THAT(terminal_.ReadNow(), HasSubstr("You are asked in a window. Ctrl+C withdraws the question."));
  standIn.Finish(7, "added");
  standIn.Finish(1, "declined",
                 {Dictionary{{"StoreID", "s1"}, {"StoreName", "One\x1B[2J"}, {"Outcome", "declined"}}});
  ASSERT_TRUE(standIn.ServeUntil([&] { return !srctl.IsRunning(); }));
  EXPECT_EQ(srctl.Wait(), 4) << "another opening's end is none of its own";
  EXPECT_THAT(terminal_.ReadNow(),
              testing::AllOf(HasSubstr("\"One\uFFFD[2J\" (s1)"), Not(HasSubstr("\x1B"))));
}

TEST_F(SrctlOnTerminal, SaysWhatToDoWhenTheAgentHasTooManyFiles) {
  StandInAgent standIn(agent_.BusAddress());
  standIn.takesFiles = false;
  ChildProcess srctl = Open();
  ASSERT_TRUE(standIn.ServeUntil([&] { return !srctl.IsRunning(); }));
  EXPECT_EQ(srctl.Wait(), 1);
  EXPECT_THAT(terminal_.ReadNow(), HasSubstr("srctl: The agent is opening many files already, so it did not "
                                             "take \"" +
                                             file_ + "\". Answer the questions that are open"));
}

TEST_F(SrctlOnTerminal, SaysWhyTheAgentCannotReadAFile) {
  StandInAgent standIn(agent_.BusAddress());
  ChildProcess srctl = LogOn("exec \"$0\" open --window \"$1\"");
  ASSERT_TRUE(standIn.ServeUntil([&] { return standIn.Opened().size() == 1; }));
  standIn.Finish(1, "not-a-service-record", {{{"Reason", "There is no such file."}}});
  ASSERT_TRUE(standIn.ServeUntil([&] { return !srctl.IsRunning(); }));
  EXPECT_EQ(srctl.Wait(), 6);
  EXPECT_THAT(terminal_.ReadNow(),
              HasSubstr("srctl: \"" + file_ +
                        "\" was not opened, because the agent cannot read it. There is no such file.\r\n"));
}

TEST_F(SrctlOnTerminal, SaysAReasonOfTwoLinesOnOne) {
  StandInAgent standIn(agent_.BusAddress());
  ChildProcess srctl = LogOn("exec \"$0\" open --window \"$1\"");
  ASSERT_TRUE(standIn.ServeUntil([&] { return standIn.Opened().size() == 1; }));
  standIn.Finish(1, "server-not-verified",
                 {Dictionary{{"StoreID", "s1"},
                             {"StoreName", "One"},
                             {"Outcome", "server-not-verified"},
                             {"Reason", "Its issuer is unknown:\nNobody"}}});
  ASSERT_TRUE(standIn.ServeUntil([&] { return !srctl.IsRunning(); }));
  EXPECT_EQ(srctl.Wait(), 5);
  EXPECT_THAT(terminal_.ReadNow(), HasSubstr(" could not be verified. Its issuer is unknown: Nobody. What is "
                                             "wrong with it: srctl doctor "));
}

TEST_F(SrctlOnTerminal, AnOutcomeOfANewerAgentIsNoSuccess) {
  StandInAgent standIn(agent_.BusAddress());
  ChildProcess srctl = LogOn("exec \"$0\" open --window \"$1\"");
  ASSERT_TRUE(standIn.ServeUntil([&] { return standIn.Opened().size() == 1; }));
  standIn.Finish(1, "postponed");
  ASSERT_TRUE(standIn.ServeUntil([&] { return !srctl.IsRunning(); }));
  EXPECT_EQ(srctl.Wait(), 1);
  EXPECT_THAT(terminal_.ReadNow(), HasSubstr("became what this srctl does not know: \"postponed\""));
}

}  // namespace
