#include "libs/CredentialWire/CredentialMessage.h"
#include "libs/HelperProgram/HelperProcess.h"
#include "support/CredentialReply.h"
#include "support/PseudoTerminal.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>

#include <csignal>
#include <cstdlib>
#include <optional>

namespace {

using testing::HasSubstr;
using testing::Not;
using TestSupport::PseudoTerminal;

constexpr const char* kUserName = "User name (empty to cancel): ";
constexpr const char* kRequest =
    "protocol=https\nhost=gateway.example\nrealm=Staff\nplace=gateway\nauthentication=";

// The credential program on a terminal, without a Secret Service.
class CredentialPromptTest : public testing::Test {
 protected:
  void SetUp() override {
    ::setenv("SERVICERECORDS_TERMINAL", terminal_.Path().c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", runtime_.Path().c_str(), 1);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  }

  void Start(const std::string& action, const std::string& request) {
    std::optional<HelperProgram::HelperProcess> started =
        HelperProgram::HelperProcess::Start(SR_CREDENTIAL_PROGRAM, {action});
    ASSERT_TRUE(started);
    program_.emplace(std::move(*started));
    TestSupport::SendRequest(*program_, request + "\n\n");
  }
  void Ask(const std::string& authentication = "domain", const std::string& more = {}) {
    Start("get", kRequest + authentication + more);
  }

  CredentialWire::CredentialMessage Reply() { return TestSupport::ReplyOf(*program_); }

  void Type(const std::string& prompt, const std::string& keys) {
    shown_ += terminal_.ReadUntil(prompt);
    terminal_.Type(keys + "\n");
  }

  bool EndsItself() {
    pollfd state{program_->Ended(), POLLIN, 0};
    return ::poll(&state, 1, 30'000) > 0;
  }

  TestSupport::TemporaryFolder runtime_;
  PseudoTerminal terminal_;
  std::optional<HelperProgram::HelperProcess> program_;
  std::string shown_;
};

TEST_F(CredentialPromptTest, GivesWhatTheUserTypes) {
  Ask();
  Type(kUserName, "DOMAIN\\user");
  Type("Password: ", " p=ss\xC3\xBC ");
  const CredentialWire::CredentialMessage reply = Reply();
  EXPECT_EQ(reply.Get("status"), "ok");
  EXPECT_EQ(reply.Get("username"), "DOMAIN\\user");
  EXPECT_EQ(reply.Get("password"), " p=ss\xC3\xBC ");
  EXPECT_EQ(reply.Get("code"), "");
  EXPECT_EQ(reply.Get("source"), "asked");
  EXPECT_EQ(reply.Get("secret-service"), "missing");
  EXPECT_THAT(shown_, HasSubstr("A gateway asks you to log on:\r\n\r\n  https://gateway.example\r\n"));
  EXPECT_THAT(shown_, HasSubstr("  Staff\r\n"));
}

TEST_F(CredentialPromptTest, PasswordAndCodeAreNotEchoed) {
  Ask("domain-and-rsa");
  Type(kUserName, "user");
  Type("Password: ", "sEcReT");
  Type("Code: ", "987654");
  const CredentialWire::CredentialMessage reply = Reply();
  EXPECT_EQ(reply.Get("password"), "sEcReT");
  EXPECT_EQ(reply.Get("code"), "987654");
  shown_ += terminal_.ReadNow();
  EXPECT_THAT(shown_, HasSubstr("user"));
  EXPECT_THAT(shown_, Not(HasSubstr("sEcReT")));
  EXPECT_THAT(shown_, Not(HasSubstr("987654")));
}

TEST_F(CredentialPromptTest, ACodeIsAskedForWhereUsersLogOnWithOne) {
  for (const char* authentication : {"rsa", "domain-and-rsa", "sms"}) {
    Ask(authentication);
    Type(kUserName, "user");
    Type("Password: ", "secret");
    Type("Code: ", " 123456 ");
    EXPECT_EQ(Reply().Get("code"), "123456") << authentication;
  }
  for (const char* authentication : {"none", "domain", "gateway-knows"}) {
    Ask(authentication);
    Type(kUserName, "user");
    Type("Password: ", "secret");
    EXPECT_EQ(Reply().Get("status"), "ok") << authentication;
  }
}

TEST_F(CredentialPromptTest, AnEmptyUserNameOrCodeAndTheEndOfInputCancel) {
  Ask();
  Type(kUserName, "");
  EXPECT_EQ(Reply().Get("status"), "cancelled");
  Ask();
  shown_ += terminal_.ReadUntil(kUserName);
  terminal_.Type("\x04");
  EXPECT_EQ(Reply().Get("status"), "cancelled");
  Ask("sms");
  Type(kUserName, "user");
  Type("Password: ", "secret");
  Type("Code: ", "");
  EXPECT_EQ(Reply().Get("status"), "cancelled");
}

TEST_F(CredentialPromptTest, SaysThatTheLastAnswerWasNotAccepted) {
  Ask("domain", "\nrejected=yes");
  Type(kUserName, "");
  EXPECT_THAT(shown_, HasSubstr("The last answer was not accepted."));
}

TEST_F(CredentialPromptTest, OffersTheUserNameOfTheAnswerThatWasNotAccepted) {
  constexpr const char* kAgain = "User name (empty for the same one, Ctrl+D to cancel): ";
  constexpr const char* kPassword = "Password (empty to cancel): ";
  Ask("domain", "\nrejected=yes\nusername=mia");
  Type(kAgain, "");
  Type(kPassword, "better");
  const CredentialWire::CredentialMessage same = Reply();
  EXPECT_EQ(same.Get("username"), "mia");
  EXPECT_EQ(same.Get("password"), "better");
  EXPECT_THAT(shown_, HasSubstr("It had the user name:\r\n\r\n  mia\r\n"));
  Ask("domain", "\nrejected=yes\nusername=mia");
  Type(kAgain, "tom");
  Type(kPassword, "other");
  EXPECT_EQ(Reply().Get("username"), "tom");
  Ask("domain", "\nrejected=yes\nusername=mia");
  shown_ += terminal_.ReadUntil(kAgain);
  terminal_.Type("\x04");
  EXPECT_EQ(Reply().Get("status"), "cancelled");
}

TEST_F(CredentialPromptTest, TwoEmptyAnswersAfterOneThatWasNotAcceptedCancel) {
  Ask("domain", "\nrejected=yes\nusername=mia");
  Type("to cancel): ", "");
  Type("to cancel): ", "");
  EXPECT_EQ(Reply().Get("status"), "cancelled");
  Ask("rsa", "\nrejected=yes\nusername=mia");
  Type("to cancel): ", "");
  Type("Password: ", "");  // a code may be all that there is
  Type("Code: ", "123456");
  EXPECT_EQ(Reply().Get("status"), "ok");
}

TEST_F(CredentialPromptTest, OffersNoUserNameWhereNoneWasRejected) {
  Ask("domain", "\nrejected=no\nusername=mia");
  Type(kUserName, "");
  EXPECT_EQ(Reply().Get("status"), "cancelled");
}

TEST_F(CredentialPromptTest, AsksAgainForWhatCannotBeSent) {
  Ask();
  Type(kUserName,
       "us\x01"
       "er");
  Type(kUserName,
       "us\xFF"
       "er");
  Type(kUserName, "user");
  Type("Password: ", "secret");
  EXPECT_EQ(Reply().Get("username"), "user");
  EXPECT_THAT(shown_, HasSubstr("cannot be sent"));
}

TEST_F(CredentialPromptTest, TheServersNameIsNeverCut) {
  const std::string host = "bank.example." + std::string(1000, 'x') + ".evil.example:8443";
  terminal_.SetColumns(2000);
  Start("get", "protocol=https\nhost=" + host + "\nrealm=Staff\nplace=gateway\nauthentication=domain");
  Type(kUserName, "");
  EXPECT_THAT(shown_, HasSubstr("\r\n\r\n  https://" + host + "\r\n\r\n"));
}

TEST_F(CredentialPromptTest, ALongServersNameGoesOnInTheNextLine) {
  const std::string host = std::string(70, 'a') + std::string(78, 'b') + ".evil.example";
  Start("get", "protocol=https\nhost=" + host + "\nrealm=Staff\nplace=gateway\nauthentication=domain");
  Type(kUserName, "");
  EXPECT_THAT(shown_, HasSubstr("\r\n  https://" + std::string(70, 'a') + "\r\n  " + std::string(78, 'b') +
                                "\r\n  .evil.example\r\n\r\n"));
}

TEST_F(CredentialPromptTest, TextsOfAServerCannotStyleTheTerminal) {
  Start("get", "protocol=https\nhost=h\nrealm=a\x1B[2J\xE2\x80\xAE" + std::string(300, 'x') +
                   "  User name: forged\nplace=store\nauthentication=none");
  Type(kUserName, "");
  EXPECT_THAT(shown_, HasSubstr("A store asks you"));
  EXPECT_THAT(shown_, Not(HasSubstr("\x1B")));
  EXPECT_THAT(shown_, Not(HasSubstr("\xE2\x80\xAE")));
  EXPECT_THAT(shown_, Not(HasSubstr("forged")));
}

TEST_F(CredentialPromptTest, SignalsCancelAndPutTheTerminalsModeBack) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    const termios before = terminal_.Mode();
    Ask();
    Type(kUserName, "user");
    shown_ += terminal_.ReadUntil("Password: ");
    EXPECT_EQ(terminal_.Mode().c_lflag & ECHO, 0U);
    ASSERT_EQ(::syscall(SYS_pidfd_send_signal, program_->Ended(), signal, nullptr, 0), 0);
    EXPECT_EQ(Reply().Get("status"), "cancelled");
    EXPECT_TRUE(EndsItself());
    EXPECT_EQ(terminal_.Mode().c_lflag, before.c_lflag);
  }
}

TEST_F(CredentialPromptTest, ATerminalThatHangsUpCancels) {
  Ask();
  Type(kUserName, "user");
  shown_ += terminal_.ReadUntil("Password: ");
  terminal_.HangUp();
  EXPECT_EQ(Reply().Get("status"), "cancelled");
}

TEST_F(CredentialPromptTest, EndsWhenItsInputCloses) {
  const termios before = terminal_.Mode();
  Ask();
  Type(kUserName, "user");
  shown_ += terminal_.ReadUntil("Password: ");
  ASSERT_EQ(::shutdown(program_->Input(), SHUT_WR), 0);
  EXPECT_TRUE(EndsItself());
  EXPECT_EQ(terminal_.Mode().c_lflag, before.c_lflag);
}

TEST_F(CredentialPromptTest, WithoutATerminalSaysSo) {
  ::setenv("SERVICERECORDS_TERMINAL", "/dev/null", 1);
  Ask();
  EXPECT_EQ(Reply().Get("status"), "no-terminal");
}

TEST_F(CredentialPromptTest, WhatItDoesNotUnderstandIsABadRequest) {
  Start("fetch", std::string(kRequest) + "none");
  EXPECT_EQ(Reply().Get("status"), "bad-request");
  Start("get", "realm=r");
  EXPECT_EQ(Reply().Get("status"), "bad-request");
  Start("store", std::string(kRequest) + "none");
  EXPECT_EQ(Reply().Get("status"), "bad-request");
  Start("get", "nonsense");
  EXPECT_EQ(Reply().Get("status"), "bad-request");
}

TEST_F(CredentialPromptTest, StoringWithoutASecretServiceFailsAndSaysWhy) {
  Start("store", "protocol=https\nhost=h\nrealm=r\nusername=u\npassword=p");
  const CredentialWire::CredentialMessage reply = Reply();
  EXPECT_EQ(reply.Get("status"), "failed");
  EXPECT_EQ(reply.Get("secret-service"), "missing");
  EXPECT_NE(reply.Get("reason"), "");
}

}  // namespace
