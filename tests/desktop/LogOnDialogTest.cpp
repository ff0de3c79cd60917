#include "desktop/DesktopTest.h"

#include <filesystem>
#include <fstream>

using testing::ElementsAre;

namespace {

using TestSupport::Role;
using TestSupport::StoreText;
using TestSupport::TestAuthority;
using TestSupport::VirtualDesktopTest;
using TestSupport::WebServer;

constexpr char kTitle[] = "Log on";
constexpr char kLogOn[] = "Log on";

// A store was added that only its gateway reaches, which lets pass who logs on. Its discovery document has
// its full name.
class LogOnDialog : public VirtualDesktopTest {
 protected:
  void SetUp() override {
    StoreText store = Store("s1", "One");
    store.url = "https://localhost:1/discovery";
    store.internalBeacons = {"https://localhost:1"};
    store.gateways = {{.name = "Gate", .location = gateway_.Address("https"), .isDefault = true}};
    ServeBehindTheGateway(store);
    StartAgent();
    BeginToOpen(agent_.Write("a.cr", TestSupport::ServiceRecordDocument({store})).string());
    Press("Add store");
    Reader().WaitFor(Role::Dialog, kTitle);
  }

  [[nodiscard]] std::string NameInList() {
    return agent_.Bus().ServiceRecords("storeForID", {"s1"})["StoreName"];
  }

  void LogOnByKeyboard(const std::string& password) {
    // After the last control that can be used comes the first field; not every toolkit tells that it has the
    // focus.
    TabTo(Role::PushButton, "Cancel");
    Type("Tab");
    Write("demo");
    Type("Tab");
    Write(password);
    Usable(Role::PushButton, kLogOn);
    Type("Return");
  }

 private:
  void ServeBehindTheGateway(StoreText store) const {
    store.name = "Full Name";
    const auto document = gateway_.Document("https/localhost:1/discovery");
    std::filesystem::create_directories(document.parent_path());
    std::ofstream(document) << TestSupport::DiscoveryDocument({store});
    std::ofstream(gateway_.Document("users")) << "demo:{PLAIN}secret word\n";
  }

  const WebServer gateway_{TestAuthority::Shared().TlsServerBlock(
      "good", "location / { auth_basic \"Staff\"; auth_basic_user_file @DOCUMENTS@/users; }")};
};

TEST_F(LogOnDialog, LogsOnByTheKeyboardAlone) {
  LogOnByKeyboard("secret word");
  AwaitHandled();
  Reader().WaitUntil("the name of the discovery document", [&] { return NameInList() == "Full Name"; });
}

TEST_F(LogOnDialog, OffersTheUserNameAgainAfterAWrongPassword) {
  LogOnByKeyboard("wrong");
  Reader().WaitFor(Role::Label, "The last answer was not accepted.");
  // The focus is in the password.
  Usable(Role::PushButton, kLogOn);
  Write("secret word");
  Type("Return");
  AwaitHandled();
  Reader().WaitUntil("the name of the discovery document", [&] { return NameInList() == "Full Name"; });
}

TEST_F(LogOnDialog, LeavesTheStoreAsItIsWhenCancelled) {
  Press("Cancel");
  AwaitHandled();
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
  EXPECT_EQ(NameInList(), "One");
}

TEST_F(LogOnDialog, GivesTheToolkitNothingToComplainOf) {
  Press("Cancel");
  AwaitHandled();
  ExpectNoComplaints(agent_.Output());
}

TEST_F(LogOnDialog, NamesEveryControlOnce) {
  ExpectEveryControlNamedOnce();
}

}  // namespace
