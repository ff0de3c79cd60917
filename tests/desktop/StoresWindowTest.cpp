#include "desktop/DesktopTest.h"

#include <csignal>
#include <optional>

using testing::ElementsAre;

namespace {

using TestSupport::ChildProcess;
using TestSupport::Role;
using TestSupport::State;
using TestSupport::VirtualDesktopTest;

constexpr char kTitle[] = "Application Stores";

// The window, and an agent that has two stores.
class StoresWindow : public VirtualDesktopTest {
 protected:
  void SetUp() override {
    agent_.Start();
    Hold(Store("s1", "One"));
    Hold(Store("s2", "Two"));
    window_.emplace(StartStoresWindow());
    Reader().WaitFor(Role::Frame, kTitle);
  }

  std::optional<ChildProcess> window_;
};

TEST_F(StoresWindow, ListsTheStores) {
  Reader().WaitFor(Role::ListItem, "One");
  Reader().WaitFor(Role::ListItem, "Two");
}

TEST_F(StoresWindow, DescribesAStoreByItsHostAndWhereThisComputerIs) {
  Reader().WaitUntil("the description", [&] {
    return Reader().WaitFor(Role::ListItem, "One").description.starts_with("\u2068localhost\u2069, ");
  });
}

TEST_F(StoresWindow, ShowsAStoreThatIsAddedWhileItIsOpen) {
  Reader().WaitFor(Role::ListItem, "Two");
  Hold(Store("s3", "Three"));
  Reader().WaitFor(Role::ListItem, "Three");
}

TEST_F(StoresWindow, ChoosesTheGatewayByTheKeyboardAlone) {
  Reader().WaitFor(Role::RadioButton, "Head Office", State::Checked);
  TabTo(Role::ListItem, "Branch");
  Type("Return");
  Reader().WaitFor(Role::RadioButton, "Branch", State::Checked);
  Reader().WaitUntil("the gateway in the list", [&] {
    const auto gateways = agent_.Bus().ServiceRecords("storeForID", {"s1"})["StoreGateways"];
    return gateways[0]["GatewayName"] == "Branch" && gateways[0]["IsDefault"] == true;
  });
}

TEST_F(StoresWindow, RemovesAStoreAfterAQuestionOnly) {
  Press("Remove Store…");
  Press("Cancel");
  Reader().WaitUntilGone(Role::PushButton, "Cancel");
  EXPECT_THAT(StoreIDs(), ElementsAre("s1", "s2"));
  Press("Remove Store…");
  Press("Remove");
  Reader().WaitUntilGone(Role::ListItem, "One");
  EXPECT_THAT(StoreIDs(), ElementsAre("s2"));
}

TEST_F(StoresWindow, GivesTheToolkitNothingToComplainOf) {
  Reader().WaitFor(Role::ListItem, "Two");
  window_->Signal(SIGTERM);
  window_->Wait();
  ExpectNoComplaints(window_->Output());
}

TEST_F(StoresWindow, NamesEveryControlOnce) {
  Reader().WaitFor(Role::ListItem, "Two");
  ExpectEveryControlNamedOnce();
}

}  // namespace
