#include "libs/Files/EventFd.h"
#include "libs/Files/FileDescriptor.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/Text/TextHelpers.h"
#include "support/PseudoTerminal.h"
#include "support/TemporaryFolder.h"
#include "ui/LoadedModule.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <future>
#include <string>
#include <thread>
#include <vector>

// The dialog program on a terminal, run by the module as in the agent.
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using TestSupport::PseudoTerminal;

constexpr const char* kQuestion = "Add it? [y/N] ";

Dictionary Store() {
  return {
      {"StoreName", "M\xC3\xBCnchen \xE6\x9D\xB1"},
      {"StoreProvider", "Morvane"},
      {"CertificateName", "store.example.com"},
      {"StoreURL", "https://store.example.com/path"},
      {"StoreGateways",
       Array{Dictionary{{"GatewayName", "Main"}, {"GatewayURL", "https://main"}, {"IsDefault", true}},
             Dictionary{{"GatewayName", "Other"}, {"GatewayURL", "https://other"}, {"IsDefault", false}}}}};
}

std::string Repeated(const std::string& text, int times) {
  std::string all;
  while (times-- > 0) all += text;
  return all;
}

// Where a terminal of 80 columns breaks a printed line, one that shows what is not ASCII two columns wide.
std::vector<std::string> LinesOnScreen(const std::string& printed) {
  constexpr std::size_t kColumns = 80;
  std::vector<std::string> lines(1);
  std::size_t used = 0;
  for (const wchar_t character : util::widen(printed)) {
    const std::size_t columns = character < 0x80 ? 1 : 2;
    if (character == L'\n' || used + columns > kColumns) {
      lines.emplace_back();
      used = 0;
    }
    if (character == L'\n' || character == L'\r') continue;
    lines.back() += util::narrow(std::wstring(1, character));
    used += columns;
  }
  return lines;
}

class TerminalDialogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    module_.Bundle().AddDialogProgram(SR_DIALOG_PROGRAM);
    ::setenv("SERVICERECORDS_TERMINAL", terminal_.Path().c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", runtime_.Path().c_str(), 1);
  }

  [[nodiscard]] OpenDialog AddStore(const Dictionary& details) const {
    return module_.AddStore(PropertyList::Write(details));
  }

  // The answer of a dialog on a terminal that the host gives.
  std::future<int> AskOn(const Files::FileDescriptor& given, int withdrawal = -1) const {
    return std::async(std::launch::async, [this, terminal = given.Get(), withdrawal] {
      SRUIHost host = module_.Host();
      host.terminalDescriptor = terminal;
      host.withdrawalDescriptor = withdrawal;
      return module_.EntryPointsFor(host)->addStore(PropertyList::Write(Store()).c_str());
    });
  }

  // The answer to a user who types `keys` when the question is there.
  int AnswerTo(const std::string& keys) {
    OpenDialog dialog = AddStore(Store());
    static_cast<void>(terminal_.ReadUntil(kQuestion));
    terminal_.Type(keys);
    return dialog.Answer();
  }

  // What is shown of a store with one text replaced.
  std::string Shown(const std::string& key, PropertyList::Value value) {
    Dictionary details = Store();
    details.Set(key, std::move(value));
    return ShownOf(details);
  }

  std::string ShownOf(const Dictionary& details) {
    OpenDialog dialog = AddStore(details);
    std::string shown = terminal_.ReadUntil(kQuestion);
    terminal_.Type("no\n");
    EXPECT_EQ(dialog.Answer(), 0);
    return shown;
  }

  TestSupport::TemporaryFolder runtime_;
  PseudoTerminal terminal_;
  LoadedModule module_;
};

TEST_F(TerminalDialogTest, ShowsTheStoreAndItsGatewaysAndAcceptsAYes) {
  OpenDialog dialog = AddStore(Store());
  const std::string shown = terminal_.ReadUntil(kQuestion);
  terminal_.Type("yes\n");

  EXPECT_EQ(dialog.Answer(), 1);
  EXPECT_THAT(shown, HasSubstr("Store:       M\xC3\xBCnchen \xE6\x9D\xB1\r\n"));
  EXPECT_THAT(shown, HasSubstr("Operated by: Morvane\r\n"));
  EXPECT_THAT(shown, HasSubstr("Issued by:   store.example.com\r\n"));
  EXPECT_THAT(shown, HasSubstr("Address:     https://store.example.com\r\n"
                               "  Path:        /path\r\n"));
  EXPECT_THAT(shown, HasSubstr("  Gateways:\r\n"
                               "    [default]  Main\r\n"
                               "      at       https://main\r\n"
                               "    [other]    Other\r\n"
                               "      at       https://other\r\n"));
}

TEST_F(TerminalDialogTest, TellsWhichServerWasVerified) {
  Dictionary store = Store();
  store.Set("VerifiedHost", "gateway.example.com");
  store.Set("VerifiedServer", "gateway");
  EXPECT_THAT(ShownOf(store), HasSubstr("  Verified:    gateway.example.com\r\n"
                                        "               (the default gateway)\r\n"
                                        "  Operated by: Morvane\r\n"));
  store.Set("VerifiedServer", "store");
  EXPECT_THAT(ShownOf(store), HasSubstr("               (the store's own server)\r\n"));
}

TEST_F(TerminalDialogTest, TellsTheASCIIFormsOfHosts) {
  Dictionary store = Store();
  EXPECT_THAT(ShownOf(store), Not(HasSubstr("In ASCII:")));
  store.Set("StoreHostASCII", "xn--stre-5qa.example.com");
  store.Set("VerifiedHost", "gat\u00E9way.example.com");
  store.Set("VerifiedHostASCII", "xn--gatway-dva.example.com");
  store.Set("VerifiedServer", "gateway");
  EXPECT_THAT(ShownOf(store), AllOf(HasSubstr("  Verified:    gat\u00E9way.example.com\r\n"
                                              "               (the default gateway)\r\n"
                                              "  In ASCII:    xn--gatway-dva.example.com\r\n"),
                                    HasSubstr("  Address:     https://store.example.com\r\n"
                                              "  Path:        /path\r\n"
                                              "  In ASCII:    xn--stre-5qa.example.com\r\n")));
}

TEST_F(TerminalDialogTest, TellsWhatAReplacementChanges) {
  const Dictionary held{{"StoreName", "Sales"}, {"StoreURL", "https://old.example"}};
  const Dictionary replacement{{"StoreName", "Sales"},
                               {"StoreURL", "https://new.example"},
                               {"ExternalBeacons", Array{"https://beacon\u202E.example"}}};
  OpenDialog dialog = module_.ReplaceStore(PropertyList::Write(
      Dictionary{{"StoreName", "Sales"}, {"HeldStore", held}, {"NewStore", replacement}}));
  const std::string shown = terminal_.ReadUntil("Replace it with the new record? [y/N] ");
  terminal_.Type("n\n");

  EXPECT_EQ(dialog.Answer(), 0);
  EXPECT_THAT(shown, HasSubstr("The new record changes:\r\n\r\n"
                               "  Address:\r\n"
                               "               Held: https://old.example\r\n"
                               "               New: https://new.example\r\n"
                               "  External beacon added:\r\n"
                               "               https://beacon<U+202E>.example\r\n"));
}

TEST_F(TerminalDialogTest, TellsWhyAServerCouldNotBeVerified) {
  module_.EntryPoints().errorMessage(PropertyList::Write(Dictionary{{"ErrorTitle", "Not verified"},
                                                                    {"ErrorMessage", "The server"},
                                                                    {"ErrorReason", "It expired."}})
                                         .c_str());
  EXPECT_THAT(terminal_.ReadUntil("expired."),
              HasSubstr("  Not verified\r\n\r\n  The server\r\n  It expired."));
}

TEST_F(TerminalDialogTest, TheErrorBoxTellsTheStoreTheServerAndTheFile) {
  const Dictionary details{{"ErrorTitle", "Not verified"},
                           {"ErrorMessage", "Ask\nSomebody"},
                           {"StoreName", "Sales"},
                           {"Server", "store.example:8443"},
                           {"DocumentPath", "/home/me/" + std::string(300, 'd') + "/a\u202E.cr"}};
  terminal_.SetColumns(1000);
  module_.EntryPoints().errorMessage(PropertyList::Write(details).c_str());

  EXPECT_THAT(terminal_.ReadUntil(".cr\r\n"), HasSubstr("  Somebody\r\n\r\n"
                                                        "  Store:       Sales\r\n"
                                                        "  Server:      store.example:8443\r\n"
                                                        "  File:        /home/me/" +
                                                        std::string(300, 'd') + "/a\uFFFD.cr\r\n"));
}

TEST_F(TerminalDialogTest, AcceptsYesInEverySpellingThatItOffers) {
  EXPECT_EQ(AnswerTo("y\n"), 1);
  EXPECT_EQ(AnswerTo("YES\n"), 1);
  EXPECT_EQ(AnswerTo(" Yes \n"), 1);
}

TEST_F(TerminalDialogTest, DeclinesOnNoOnAnEmptyAnswerAndAtTheEndOfInput) {
  EXPECT_EQ(AnswerTo("no\n"), 0);
  EXPECT_EQ(AnswerTo("\n"), 0);
  EXPECT_EQ(AnswerTo("\x04"), 0);
}

TEST_F(TerminalDialogTest, AsksAgainAfterAnUnclearAnswer) {
  OpenDialog dialog = AddStore(Store());
  static_cast<void>(terminal_.ReadUntil(kQuestion));
  terminal_.Type("perhaps\n");
  static_cast<void>(terminal_.ReadUntil("Please answer yes or no."));
  terminal_.Type("yes\n");
  EXPECT_EQ(dialog.Answer(), 1);
}

TEST_F(TerminalDialogTest, WhatWasTypedBeforeTheQuestionIsNoAnswer) {
  terminal_.Type("yes\n");
  EXPECT_EQ(AnswerTo("\n"), 0);
}

TEST_F(TerminalDialogTest, ControlCharactersOfADocumentNeverReachTheTerminal) {
  // The property list leaves out what XML cannot hold; the second control range passes.
  const std::string shown = Shown("StoreName",
                                  "a\xC2\x9B"
                                  "2Jb\nc\td\xE2\x80\xAE"
                                  "e\x7F");

  EXPECT_THAT(shown, HasSubstr("Store:       a\xEF\xBF\xBD"
                               "2Jb\xEF\xBF\xBD"
                               "c\xEF\xBF\xBD"
                               "d\xEF\xBF\xBD"
                               "e\xEF\xBF\xBD\r\n"));
}

TEST_F(TerminalDialogTest, AStoreWithoutGatewaysSaysSo) {
  EXPECT_THAT(Shown("StoreGateways", Array{}), HasSubstr("Gateways:    (none)\r\n"));
}

TEST_F(TerminalDialogTest, ADefaultGatewayWithoutAddressIsListedAsThat) {
  EXPECT_THAT(Shown("DefaultGatewayWithoutURL", "Main"),
              HasSubstr("    [default]  Main\r\n      at       (no address)\r\n"));
}

TEST_F(TerminalDialogTest, ALongListOfGatewaysIsCut) {
  const Dictionary gateway{{"GatewayName", "G"}, {"GatewayURL", "https://g"}, {"IsDefault", false}};
  EXPECT_THAT(Shown("StoreGateways", Array(20, gateway)), HasSubstr("    and 12 more\r\n"));
}

TEST_F(TerminalDialogTest, AStoreWithoutTheGatewaysKeySaysSo) {
  OpenDialog dialog = AddStore(Dictionary{{"StoreName", "Sales"}});
  EXPECT_THAT(terminal_.ReadUntil(kQuestion), HasSubstr("Gateways:    (none)\r\n"));
  terminal_.Type("\n");
  EXPECT_EQ(dialog.Answer(), 0);
}

TEST_F(TerminalDialogTest, ALongNameIsCut) {
  terminal_.SetColumns(400);
  EXPECT_THAT(Shown("StoreName", std::string(200, 'x')), HasSubstr(" " + std::string(200, 'x') + "\r\n"));
  EXPECT_THAT(Shown("StoreName", std::string(201, 'x')),
              HasSubstr(" " + std::string(200, 'x') + "\xE2\x80\xA6\r\n"));
}

TEST_F(TerminalDialogTest, AHostIsNeverCut) {
  const std::string lure = "bank.example." + std::string(4000, 'x');
  const std::string address = "https://" + lure + ".evil.example:8443";
  terminal_.SetColumns(10000);
  EXPECT_THAT(Shown("StoreURL", address + "/" + std::string(300, 'p')),
              HasSubstr("  Address:     " + address + "\r\n  Path:        /" + std::string(199, 'p') +
                        "\xE2\x80\xA6\r\n"));
  EXPECT_THAT(Shown("CertificateName", lure + ".evil"), HasSubstr("  Issued by:   " + lure + ".evil\r\n"));
  EXPECT_THAT(Shown("StoreProvider", lure + ".evil"), HasSubstr("  Operated by: " + lure + ".evil\r\n"));
  const Dictionary gateway{{"GatewayName", "G"}, {"GatewayURL", address + "/p"}, {"IsDefault", true}};
  EXPECT_THAT(Shown("StoreGateways", Array{gateway}),
              HasSubstr("      at       " + address + "\r\n      path     /p\r\n"));
}

TEST_F(TerminalDialogTest, TheEndOfALongHostIsTheEndOfALine) {
  const std::string lure = "bank.example." + std::string(190, 'x');
  const std::string shown = Shown("StoreURL", "https://" + lure + ".evil.example/path");
  EXPECT_THAT(shown, HasSubstr("xx.evil.example\r\n  Path:        /path\r\n"));
}

TEST_F(TerminalDialogTest, ALongTextGoesOnBelowItselfAtEveryWidth) {
  const std::string word(90, 'x');
  EXPECT_THAT(Shown("StoreName", word), HasSubstr("  Store:       " + word.substr(0, 65) + "\r\n" +
                                                  std::string(15, ' ') + word.substr(65) + "\r\n"));
  terminal_.SetColumns(60);
  EXPECT_THAT(Shown("StoreName", word), HasSubstr("  Store:       " + word.substr(0, 45) + "\r\n" +
                                                  std::string(15, ' ') + word.substr(45) + "\r\n"));
}

TEST_F(TerminalDialogTest, NoTextPassesForALineOfTheDialog) {
  const std::string forged = "  Operated by: Somebody Else";
  const std::string wide = "\xE6\x9D\xB1";
  for (const std::string& name :
       {std::string(65, 'x') + forged, "x" + std::string(64, ' ') + forged, Repeated("\xC2\xA0", 65) + forged,
        "x" + Repeated("\xE3\x80\x80", 32) + forged, Repeated(wide, 32) + "x" + forged, "x\n" + forged}) {
    EXPECT_THAT(LinesOnScreen(Shown("StoreName", name)), Contains(StartsWith("  Operated by:")).Times(1))
        << name;
  }
}

TEST_F(TerminalDialogTest, AGatewaysNameForgesNeitherTheMarkNorAnAddress) {
  const Dictionary gateway{
      {"GatewayName", "[default] Main, https://good" + std::string(40, ' ') + "at https://good"},
      {"GatewayURL", "https://bad [default]"},
      {"IsDefault", false}};
  EXPECT_THAT(Shown("StoreGateways", Array{gateway}),
              HasSubstr("    [other]    [default] Main, https://good at https://good\r\n"
                        "      at       https://bad [default]\r\n"));
}

TEST_F(TerminalDialogTest, OfManyChangesTheRestIsCounted) {
  Array beacons;
  for (int number = 0; number < 15; ++number) beacons.push_back("http://" + std::to_string(number));
  OpenDialog dialog = module_.ReplaceStore(PropertyList::Write(
      Dictionary{{"StoreName", "Sales"},
                 {"HeldStore", Dictionary{{"StoreName", "Sales"}}},
                 {"NewStore", Dictionary{{"InternalBeacons", beacons}, {"StoreName", "Sales"}}}}));
  const std::string shown = terminal_.ReadUntil("Replace it with the new record? [y/N] ");
  terminal_.Type("n\n");

  EXPECT_EQ(dialog.Answer(), 0);
  EXPECT_THAT(shown, HasSubstr("http://11\r\n"));
  EXPECT_THAT(shown, Not(HasSubstr("http://12")));
  EXPECT_THAT(shown, HasSubstr("Further changes:\r\n               3 more\r\n"));
}

TEST_F(TerminalDialogTest, TheReplaceDialogNamesTheStore) {
  OpenDialog dialog = module_.ReplaceStore(PropertyList::Write(Dictionary{{"StoreName", "Sales"}}));
  EXPECT_THAT(terminal_.ReadUntil("Replace it with the new record? [y/N] "),
              HasSubstr("Store:       Sales\r\n"));
  terminal_.Type("y\n");
  EXPECT_EQ(dialog.Answer(), 1);
}

TEST_F(TerminalDialogTest, TheErrorBoxPrintsTitleAndMessage) {
  const Dictionary details{{"ErrorTitle", "Not added"}, {"ErrorMessage", "First\nSecond"}};
  module_.EntryPoints().errorMessage(PropertyList::Write(details).c_str());

  EXPECT_THAT(terminal_.ReadUntil("Second\r\n"), HasSubstr("Not added\r\n\r\n  First\r\n  Second\r\n"));
}

TEST_F(TerminalDialogTest, ALongErrorMessageGoesOnBelowItself) {
  const Dictionary details{{"ErrorTitle", std::string(100, 't')},
                           {"ErrorMessage", std::string(100, 'm') + "\nEnd"}};
  module_.EntryPoints().errorMessage(PropertyList::Write(details).c_str());

  const std::string shown = terminal_.ReadUntil("End\r\n");
  EXPECT_THAT(shown, HasSubstr("  " + std::string(78, 't') + "\r\n  " + std::string(22, 't') + "\r\n"));
  EXPECT_THAT(shown, HasSubstr("  " + std::string(78, 'm') + "\r\n  " + std::string(22, 'm') + "\r\n"));
}

TEST_F(TerminalDialogTest, TheErrorBoxNeverCutsAHost) {
  const std::string host(5000, 'h');
  const Dictionary details{{"ErrorTitle", "Not added"},
                           {"ErrorMessage", "Not contacted:\nhttps://" + host + ".evil.example/p\nEnd"}};
  terminal_.SetColumns(10000);
  module_.EntryPoints().errorMessage(PropertyList::Write(details).c_str());

  EXPECT_THAT(terminal_.ReadUntil("End\r\n"),
              HasSubstr("  Not contacted:\r\n  https://" + host + ".evil.example\r\n  /p\r\n  End\r\n"));
}

TEST_F(TerminalDialogTest, AsksInLinesOnARawTerminalAndPutsItsModeBack) {
  terminal_.MakeRaw();
  const termios before = terminal_.Mode();
  OpenDialog dialog = AddStore(Store());

  EXPECT_THAT(terminal_.ReadUntil(kQuestion), HasSubstr("Operated by: Morvane\r\n"));
  terminal_.Type("nes\x7F\x7F\x7Fyes\r");

  EXPECT_EQ(dialog.Answer(), 1);
  const termios after = terminal_.Mode();
  EXPECT_EQ(after.c_iflag, before.c_iflag);
  EXPECT_EQ(after.c_oflag, before.c_oflag);
  EXPECT_EQ(after.c_lflag, before.c_lflag);
}

TEST_F(TerminalDialogTest, ATerminalThatHangsUpDeclines) {
  OpenDialog dialog = AddStore(Store());
  static_cast<void>(terminal_.ReadUntil(kQuestion));

  terminal_.HangUp();

  EXPECT_EQ(dialog.Answer(), 0);
}

TEST_F(TerminalDialogTest, AnOpenQuestionClosesOnTermination) {
  OpenDialog dialog = AddStore(Store());
  static_cast<void>(terminal_.ReadUntil(kQuestion));

  module_.RequestTermination();

  EXPECT_EQ(dialog.Answer(), 0);
  static_cast<void>(terminal_.ReadUntil("taken as no."));
}

TEST_F(TerminalDialogTest, DialogsTakeTurnsOnTheTerminal) {
  OpenDialog first = AddStore(Store());
  static_cast<void>(terminal_.ReadUntil(kQuestion));
  OpenDialog second = AddStore(Store());
  terminal_.Type("no\n");
  EXPECT_EQ(first.Answer(), 0);
  static_cast<void>(terminal_.ReadUntil(kQuestion));
  terminal_.Type("yes\n");
  EXPECT_EQ(second.Answer(), 1);
}

TEST_F(TerminalDialogTest, ADialogThatWaitsForItsTurnClosesOnTermination) {
  const int turn =
      ::open((runtime_.Path() / "servicerecord-dialog.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(::flock(turn, LOCK_EX), 0);
  OpenDialog dialog = AddStore(Store());

  module_.RequestTermination();

  EXPECT_EQ(dialog.Answer(), 0);
  EXPECT_EQ(terminal_.ReadNow(), "");
  ::close(turn);
}

TEST_F(TerminalDialogTest, WithoutATerminalNothingIsAccepted) {
  ::setenv("SERVICERECORDS_TERMINAL", "/dev/null", 1);
  OpenDialog dialog = AddStore(Store());
  EXPECT_EQ(dialog.Answer(), SRUI_COULD_NOT_ASK);
}

// The dialog program alone, its input from a file.
class DialogReplyTest : public TerminalDialogTest {
 protected:
  std::string ReplyTo(const std::string& request) {
    const auto file = runtime_.Path() / "request";
    std::ofstream(file, std::ios::binary) << request;
    FILE* reply = ::popen((std::string(SR_DIALOG_PROGRAM " <") + file.string()).c_str(), "r");
    if (reply == nullptr) return {};
    std::string text;
    for (int next = std::fgetc(reply); next != EOF; next = std::fgetc(reply)) text += static_cast<char>(next);
    ::pclose(reply);
    return text;
  }

  static std::string Request(const std::string& start, const std::string& details) {
    return start + " " + std::to_string(details.size()) + "\n" + details;
  }

  const std::string details_ = PropertyList::Write(Store());
};

TEST_F(DialogReplyTest, AMissingTerminalIsNoDisplay) {
  ::setenv("SERVICERECORDS_TERMINAL", "/dev/null", 1);
  EXPECT_EQ(ReplyTo(Request("ServiceRecordUI 1 addStore", details_)), "no display\n");
  ::setenv("SERVICERECORDS_TERMINAL", "/nonexistent", 1);
  EXPECT_EQ(ReplyTo(Request("ServiceRecordUI 1 addStore", details_)), "no display\n");
}

TEST_F(DialogReplyTest, AnInputThatIsClosedDeclines) {
  EXPECT_EQ(ReplyTo(Request("ServiceRecordUI 1 addStore", details_)), "declined\n");
}

TEST_F(DialogReplyTest, WhatItDoesNotUnderstandIsAnUnknownRequest) {
  EXPECT_EQ(ReplyTo(Request("ServiceRecordUI 2 addStore", details_)), "unknown request\n");
  EXPECT_EQ(ReplyTo(Request("ServiceRecordUI 1 removeStore", details_)), "unknown request\n");
  EXPECT_EQ(ReplyTo(Request("ServiceRecordUI 1 logOn", details_)), "unknown request\n");
  EXPECT_EQ(ReplyTo(Request("SomethingElse 1 addStore", details_)), "unknown request\n");
  EXPECT_EQ(ReplyTo(Request("ServiceRecordUI 1 addStore", "not a property list")), "unknown request\n");
  EXPECT_EQ(ReplyTo(Request("ServiceRecordUI 1 addStore", PropertyList::Write("no dictionary"))),
            "unknown request\n");
  EXPECT_EQ(ReplyTo("ServiceRecordUI 1 addStore 99999999999\n"), "unknown request\n");
  EXPECT_EQ(ReplyTo("ServiceRecordUI 1 addStore 12 \n"), "unknown request\n");
  EXPECT_EQ(ReplyTo("ServiceRecordUI 1 addStore 5000\n" + details_), "unknown request\n");
  EXPECT_EQ(ReplyTo(std::string(5000, 'x')), "unknown request\n");
  EXPECT_EQ(ReplyTo(""), "unknown request\n");
}

TEST_F(TerminalDialogTest, AsksOnTheTerminalThatTheHostGives) {
  ::setenv("SERVICERECORDS_TERMINAL", "/dev/null", 1);
  const Files::FileDescriptor given(::open(terminal_.Path().c_str(), O_RDWR | O_NOCTTY));
  auto answer = AskOn(given);
  static_cast<void>(terminal_.ReadUntil(kQuestion));

  terminal_.Type("y\n");

  EXPECT_EQ(answer.get(), 1);
}

TEST_F(TerminalDialogTest, AWithdrawnQuestionLeavesAStoppedTerminalAsItWas) {
  terminal_.MakeRaw();
  const tcflag_t before = terminal_.Mode().c_lflag;
  const Files::FileDescriptor given(::open(terminal_.Path().c_str(), O_RDWR | O_NOCTTY));
  const Files::EventFd withdrawal;
  ::tcflow(given.Get(), TCOOFF);
  auto answer = AskOn(given, withdrawal.Descriptor());
  // Nothing is printed that would tell when the program has the terminal.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (terminal_.Mode().c_lflag == before && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_NE(terminal_.Mode().c_lflag, before);

  withdrawal.Raise();

  EXPECT_EQ(answer.get(), 0);
  EXPECT_EQ(terminal_.Mode().c_lflag, before);
}

TEST_F(TerminalDialogTest, LeavesTheGivenTerminalBlockingForItsOwner) {
  const Files::FileDescriptor given(::open(terminal_.Path().c_str(), O_RDWR | O_NOCTTY));
  auto answer = AskOn(given);
  static_cast<void>(terminal_.ReadUntil(kQuestion));

  EXPECT_EQ(::fcntl(given.Get(), F_GETFL) & O_NONBLOCK, 0);
  terminal_.Type("n\n");
  EXPECT_EQ(answer.get(), 0);
}

}  // namespace
