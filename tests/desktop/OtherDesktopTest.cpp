#include "desktop/DesktopTest.h"
#include "support/ServiceManager.h"

using testing::ElementsAre;

namespace {

using TestSupport::ChildProcess;
using TestSupport::DesktopTest;
using TestSupport::ScreenBefore;
using TestSupport::ServiceManager;
using TestSupport::VirtualScreen;

// The agent was started without a desktop, as by the first log-on over SSH; afterwards the user sits down at
// one.
class OtherDesktop : protected ScreenBefore<VirtualScreen>, public DesktopTest {
 protected:
  OtherDesktop() : DesktopTest({}) { agent_.Start(); }

  // What the programs on the desktop run with.
  [[nodiscard]] std::vector<std::string> OnTheDesktop() const {
    std::vector<std::string> environment = agent_.Environment();
    environment.push_back("DISPLAY=" + screen_.Display());
    return environment;
  }
};

TEST_F(OtherDesktop, SrctlHasTheUserAskedOnItsOwn) {
  ChildProcess srctl(
      {(agent_.Prefix() / "bin/srctl").string(), "open", OpenableFile("a.cr", {Store("s1", "One")})},
      OnTheDesktop());
  Press("Add store");
  EXPECT_EQ(srctl.Wait(), 0);
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

TEST_F(OtherDesktop, SrctlHasAnErrorShownOnItsOwn) {
  TestSupport::StoreText unreachable = Store("s1", "One");
  unreachable.url = "https://localhost:1/discovery";
  unreachable.gateways.clear();
  ChildProcess srctl({(agent_.Prefix() / "bin/srctl").string(), "open", OpenableFile("a.cr", {unreachable})},
                     OnTheDesktop());
  Press("Close");
  EXPECT_EQ(srctl.Wait(), 5);
}

TEST_F(OtherDesktop, ADoubleClickAsksOnTheOneThatTheServiceManagerKnows) {
  const ServiceManager manager(agent_.BusAddress(), {"PATH=/usr/bin", "DISPLAY=" + screen_.Display()});
  ChildProcess desktop({"gio", "open", OpenableFile("a.cr", {Store("s1", "One")})}, OnTheDesktop());
  Press("Add store");
  EXPECT_EQ(desktop.Wait(), 0);
  Reader().WaitUntil("the store", [&] { return StoreIDs() == std::vector<std::string>{"s1"}; });
}

}  // namespace
