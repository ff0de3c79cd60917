#include "libs/CredentialWire/CredentialMessage.h"
#include "libs/Files/FileDescriptor.h"
#include "libs/HelperProgram/HelperProcess.h"
#include "libs/PropertyList/PropertyList.h"
#include "support/CredentialReply.h"
#include "support/EnvironmentVariable.h"
#include "support/PseudoTerminal.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <thread>
#include <utility>

// The credential program beside a plug-in whose program with windows is a script of the test's own.
namespace {

using CredentialWire::CredentialMessage;
using HelperProgram::HelperProcess;
using PropertyList::Dictionary;
using ::testing::HasSubstr;
using TestSupport::PseudoTerminal;

constexpr const char* kRequest =
    "protocol=https\nhost=gateway.example:8443\nrealm=Staff\nplace=gateway\nauthentication=rsa\n"
    "store-name=Sales\ngateway-name=Main\n";
constexpr const char* kUserName = "User name (empty to cancel): ";

class CredentialWindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(Bundle());
    std::filesystem::copy_file(SR_CREDENTIAL_PROGRAM, Program());
  }

  [[nodiscard]] std::filesystem::path Program() const { return folder_.Path() / "servicerecord-credential"; }
  [[nodiscard]] std::filesystem::path Bundle() const {
    return folder_.Path() / "PlugIns" / "ServiceRecordUI.bundle";
  }

  void ScriptWindow(const std::string& body) const {
    const std::filesystem::path file = Bundle() / "servicerecord-dialog-window";
    std::ofstream(file) << "#!/bin/bash\ncd \"${0%/*}\" || exit 1\n"
                           "read -r word version dialog size; head -c \"$size\" >details\n"
                        << body << "\n";
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
  }

  void Ask(const std::string& more = {}, int given = -1) {
    std::optional<HelperProcess> started = HelperProcess::Start(Program(), {"get"}, given);
    ASSERT_TRUE(started);
    program_.emplace(std::move(*started));
    TestSupport::SendRequest(*program_, kRequest + more + "\n");
  }

  [[nodiscard]] CredentialMessage Reply() const { return TestSupport::ReplyOf(*program_); }

  [[nodiscard]] std::string StatusAfter(const std::string& window) {
    ScriptWindow(window);
    Ask();
    return std::string(Reply().Get("status"));
  }

  // What the window was asked.
  [[nodiscard]] Dictionary Details() const {
    std::ifstream stream(Bundle() / "details", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    const auto root = PropertyList::Read(text);
    const Dictionary* details = root ? root->As<Dictionary>() : nullptr;
    return details != nullptr ? *details : Dictionary();
  }

  TestSupport::TemporaryFolder folder_;
  TestSupport::EnvironmentVariable display_{"DISPLAY", ":7"};
  TestSupport::EnvironmentVariable wayland_{"WAYLAND_DISPLAY", std::nullopt};
  TestSupport::EnvironmentVariable runtime_{"XDG_RUNTIME_DIR", folder_.Path()};
  TestSupport::EnvironmentVariable bus_{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"};
  TestSupport::EnvironmentVariable named_{"SERVICERECORDS_TERMINAL", "/dev/null"};
  std::optional<HelperProcess> program_;
};

TEST_F(CredentialWindowTest, GivesWhatTheUserTypesInTheWindow) {
  ScriptWindow("printf 'accepted\\nusername=mia\\npassword= p=ss \\ncode=12\\nremember=yes\\n\\n'");

  Ask();

  const CredentialMessage reply = Reply();
  EXPECT_EQ(reply.Get("status"), "ok");
  EXPECT_EQ(reply.Get("source"), "asked");
  EXPECT_EQ(reply.Get("username"), "mia");
  EXPECT_EQ(reply.Get("password"), " p=ss ");
  EXPECT_EQ(reply.Get("code"), "12");
  EXPECT_EQ(reply.Get("remember"), "yes");
}

TEST_F(CredentialWindowTest, TheWindowIsToldWhoAsksAndForWhat) {
  EXPECT_EQ(StatusAfter("[ \"$dialog\" = logOn ] && echo declined"), "cancelled");

  const Dictionary expected{{"Server", "https://gateway.example:8443"},
                            {"Realm", "Staff"},
                            {"Place", "gateway"},
                            {"StoreName", "Sales"},
                            {"GatewayName", "Main"},
                            {"WasRejected", false},
                            {"NeedsCode", true},
                            {"CanRemember", false},
                            {"KnownUserName", ""},
                            {"RejectedUserName", ""}};
  EXPECT_EQ(Details(), expected);
}

TEST_F(CredentialWindowTest, TheWindowOffersTheUserNameOfTheAnswerThatWasNotAccepted) {
  ScriptWindow("echo declined");
  Ask("rejected=yes\nusername=mia\n");
  EXPECT_EQ(Reply().Get("status"), "cancelled");
  EXPECT_EQ(*Details().Find("RejectedUserName"), PropertyList::Value("mia"));
}

TEST_F(CredentialWindowTest, CancellingIsToldApartFromFailing) {
  EXPECT_EQ(StatusAfter("echo declined"), "cancelled");
  EXPECT_EQ(StatusAfter("exit 1"), "failed");
  EXPECT_EQ(StatusAfter("echo unknown request"), "failed");
  EXPECT_EQ(StatusAfter("echo anything"), "failed");
  EXPECT_EQ(StatusAfter("printf 'accepted\\nusername=mia\\n'"), "failed");
  EXPECT_EQ(StatusAfter("printf 'accepted\\nno key\\n\\n'"), "failed");
  EXPECT_EQ(StatusAfter("while printf x; do :; done"), "failed");
}

TEST_F(CredentialWindowTest, WithoutADisplayATerminalIsLookedFor) {
  PseudoTerminal terminal;
  EXPECT_EQ(StatusAfter("echo no display"), "no-terminal");
  const TestSupport::EnvironmentVariable named("SERVICERECORDS_TERMINAL", terminal.Path());

  ScriptWindow("echo no display");
  Ask();

  EXPECT_THAT(terminal.ReadUntil(kUserName), HasSubstr("  https://gateway.example:8443\r\n"));
  terminal.Type("\n");
  EXPECT_EQ(Reply().Get("status"), "cancelled");
}

TEST_F(CredentialWindowTest, TheGivenTerminalIsPreferred) {
  PseudoTerminal terminal;
  const Files::FileDescriptor given(::open(terminal.Path().c_str(), O_RDWR | O_NOCTTY));
  ScriptWindow("echo declined; echo asked >asked");

  Ask("terminal=3\n", given.Get());

  const std::string shown = terminal.ReadUntil(kUserName);
  EXPECT_THAT(shown, HasSubstr("For the store:\r\n\r\n  Sales\r\n"));
  EXPECT_THAT(shown, HasSubstr("The store calls the gateway:\r\n\r\n  Main\r\n"));
  terminal.Type("\n");
  EXPECT_EQ(Reply().Get("status"), "cancelled");
  EXPECT_FALSE(std::filesystem::exists(Bundle() / "asked"));
}

TEST_F(CredentialWindowTest, AGivenTerminalThatIsNoneIsNotReplacedByAnother) {
  ScriptWindow("echo declined");
  for (const char* const number : {"terminal=9\n", "terminal=x\n", "terminal=1\n"}) {
    Ask(number);
    EXPECT_EQ(Reply().Get("status"), "no-terminal") << number;
  }
}

TEST_F(CredentialWindowTest, TheWindowClosesWhenNobodyWantsTheAnswerAnyMore) {
  ScriptWindow("echo open >open; read -r never; echo closed >closed");
  Ask();
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!std::filesystem::exists(Bundle() / "open") && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }

  ::shutdown(program_->Input(), SHUT_WR);

  EXPECT_EQ(Reply().Get("status"), "cancelled");
  EXPECT_TRUE(std::filesystem::exists(Bundle() / "closed"));
}

}  // namespace
