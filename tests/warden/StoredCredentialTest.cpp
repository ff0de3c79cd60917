#include "support/PseudoTerminal.h"
#include "support/TrustedAuthority.h"
#include "support/WebServer.h"
#include "warden/KeyringSession.h"
#include "warden/WardenLibrary.h"
#include "warden/WardenRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <future>

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using TestSupport::KeyringSession;
using TestSupport::PseudoTerminal;
using TestSupport::TestRoute;
using TestSupport::TrustedAuthority;
using TestSupport::WardenLibrary;
using TestSupport::WardenRequest;
using TestSupport::WebServer;

constexpr const char* kUserName = "User name (empty to cancel): ";
constexpr const char* kUserNameAgain = "User name (empty for the same one, Ctrl+D to cancel): ";
constexpr const char* kKeep = "for the next time? [y/N] ";

// A store behind TLS and a password, the real credential program, a keyring, and a user at a terminal.
class StoredCredentialTest : public testing::Test {
 protected:
  void SetUp() override {
    ::setenv("SERVICERECORDS_TERMINAL", terminal_.Path().c_str(), 1);
    SetPassword("secret");
    std::ofstream(server_.Document("discovery")) << "<found/>";
  }

  void SetPassword(const std::string& password) {
    std::ofstream(server_.Document("passwords")) << "user:{PLAIN}" << password << "\n";
  }
  [[nodiscard]] std::string Host() const { return "localhost:" + std::to_string(server_.Port()); }

  // The last action of a request that runs while the user does `answer`.
  template <typename Answer>
  std::uint32_t RunWhile(Answer answer, std::uint32_t authentication = 1) {
    std::future<std::uint32_t> action = std::async(std::launch::async, [this, authentication] {
      const std::string address = "https://" + Host();
      WardenRequest request(library_, std::wstring(address.begin(), address.end()) + L"/discovery");
      if (authentication != 1) {
        EXPECT_EQ(
            request.ForceRoute({std::wstring(address.begin(), address.end()) + L"/gate", authentication, 2}),
            MORVANE_WARDEN_OK);
      }
      return request.Run();
    });
    answer();
    return action.get();
  }
  void Type(const std::string& prompt, const std::string& keys) {
    static_cast<void>(terminal_.ReadUntil(prompt));
    terminal_.Type(keys + "\n");
  }
  // Where nothing can be kept, so that there is no question about it.
  void LogOnUnkept(const std::string& password) {
    Type(kUserName, "user");
    Type("Password: ", password);
  }
  void LogOn(const std::string& password, const std::string& keep) {
    LogOnUnkept(password);
    Type(kKeep, keep);
  }
  static void Nothing() {}

  KeyringSession keyring_;
  PseudoTerminal terminal_;
  WebServer server_{TrustedAuthority().TlsServerBlock("good", R"(
    location = /discovery { auth_basic "Stores"; auth_basic_user_file @DOCUMENTS@/passwords; }
    location /gate/ { auth_basic "Gate"; auth_basic_user_file @DOCUMENTS@/passwords; try_files /discovery =404; })")};
  WardenLibrary library_;
};

TEST_F(StoredCredentialTest, ACredentialToBeKeptIsUsedTheNextTime) {
  EXPECT_EQ(RunWhile([this] { LogOn("secret", "yes"); }), 1U);
  EXPECT_THAT(keyring_.Kept(Host()), HasSubstr("secret = secret\n"));
  EXPECT_EQ(RunWhile(Nothing), 1U);
  EXPECT_THAT(library_.Log(), Contains(HasSubstr("using the stored credential")));
}

TEST_F(StoredCredentialTest, ACredentialNotToBeKeptIsNotStored) {
  EXPECT_EQ(RunWhile([this] { LogOn("secret", "no"); }), 1U);
  EXPECT_EQ(keyring_.Kept(Host()), "");
}

TEST_F(StoredCredentialTest, AWrongPasswordIsNotStoredAndAskedForAgain) {
  EXPECT_EQ(RunWhile([this] {
              LogOn("wrong", "yes");
              Type(kUserNameAgain, "");
              Type("Password (empty to cancel): ", "secret");
              Type(kKeep, "yes");
            }),
            1U);
  EXPECT_THAT(keyring_.Kept(Host()), Not(HasSubstr("wrong")));
}

TEST_F(StoredCredentialTest, ARejectedStoredCredentialIsErased) {
  EXPECT_EQ(RunWhile([this] { LogOn("secret", "yes"); }), 1U);
  SetPassword("changed");
  EXPECT_EQ(RunWhile([this] { Type(kUserNameAgain, "\x04"); }), 8U);
  EXPECT_EQ(keyring_.Kept(Host()), "");
}

TEST_F(StoredCredentialTest, ACodeIsAskedForBesideTheStoredPasswordAndNeverStored) {
  SetPassword("secret123456");
  EXPECT_EQ(RunWhile(
                [this] {
                  Type(kUserName, "user");
                  Type("Password: ", "secret");
                  Type("Code: ", "123456");
                  Type(kKeep, "y");
                },
                3),
            1U);
  EXPECT_THAT(keyring_.Kept(Host()), HasSubstr("secret = secret\n"));
  EXPECT_THAT(keyring_.Kept(Host()), Not(HasSubstr("123456")));
  SetPassword("secret777777");
  EXPECT_EQ(RunWhile([this] { Type("Code: ", "777777"); }, 3), 1U);
}

TEST_F(StoredCredentialTest, ALockedKeyringIsLoggedAndTheUserAskedWithoutKeeping) {
  EXPECT_EQ(RunWhile([this] { LogOn("secret", "yes"); }), 1U);
  keyring_.Lock();
  EXPECT_EQ(RunWhile([this] { LogOnUnkept("secret"); }), 1U);
  EXPECT_THAT(library_.Log(), Contains(StartsWith("2 Warden: the Secret Service is locked")));
}

TEST_F(StoredCredentialTest, ALockedKeyringIsNoticedWhenNothingIsKeptThere) {
  keyring_.Lock();
  EXPECT_EQ(RunWhile([this] { LogOnUnkept("secret"); }), 1U);
  EXPECT_THAT(library_.Log(), Contains(StartsWith("2 Warden: the Secret Service is locked")));
  EXPECT_THAT(terminal_.ReadNow(), Not(HasSubstr(kKeep)));
}

TEST_F(StoredCredentialTest, AnUnlockedCredentialIsUsedBesideALockedKeyring) {
  keyring_.Keep("session", Host(), "Stores", "secret");
  keyring_.Lock();
  EXPECT_EQ(RunWhile(Nothing), 1U);
  EXPECT_THAT(library_.Log(), Contains(StartsWith("2 Warden: the Secret Service is locked")));
}

TEST_F(StoredCredentialTest, AKeptCredentialThatCannotBeSentIsAskedForAndReplaced) {
  keyring_.Keep("default", Host(), "Stores", "secret\n");
  EXPECT_THAT(keyring_.Kept(Host()), HasSubstr("secret = secret\n\n"));
  EXPECT_EQ(RunWhile([this] { LogOn("secret", "yes"); }), 1U);
  EXPECT_EQ(RunWhile(Nothing), 1U);
  EXPECT_THAT(library_.Log(), Contains(HasSubstr("using the stored credential")));
}

TEST_F(StoredCredentialTest, AMissingSecretServiceIsLoggedAndTheUserAskedWithoutKeeping) {
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  EXPECT_EQ(RunWhile([this] { LogOnUnkept("secret"); }), 1U);
  EXPECT_THAT(library_.Log(), Contains(StartsWith("2 Warden: the Secret Service is missing")));
}

TEST_F(StoredCredentialTest, CancellingClosesTheUsersQuestion) {
  EXPECT_EQ(RunWhile([this] {
              static_cast<void>(terminal_.ReadUntil(kUserName));
              library_.CancelRequests();
            }),
            8U);
  static_cast<void>(terminal_.ReadUntil("Log-on cancelled."));
}

}  // namespace
