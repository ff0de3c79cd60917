#include "desktop/DesktopTest.h"

#include <csignal>
#include <optional>

using testing::ElementsAre;

namespace {

using TestSupport::ChildProcess;
using TestSupport::Control;
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
    Show();
  }
  virtual void Show() {
    window_.emplace(StartStoresWindow());
    Reader().WaitFor(Role::Frame, kTitle);
  }

  std::optional<ChildProcess> window_;
};

class StoresWindowInGerman : public StoresWindow {
 protected:
  // The agent and srctl know nothing of the language.
  void Show() override {
    window_.emplace(StartStoresWindow({"LC_ALL=C.UTF-8", "LANGUAGE=de"}));
    Reader().WaitFor(Role::Frame, "Anwendungs-Stores");
  }
  void AwaitRow(const std::string& title, const std::string& text) {
    Reader().WaitUntil(text, [&] {
      return Count([&](const Control& control) {
               return control.name == title && control.description == text;
             }) == 1;
    });
  }
};

TEST_F(StoresWindow, ListsTheStores) {
  Reader().WaitFor(Role::ListItem, "One");
  Reader().WaitFor(Role::ListItem, "Two");
}

TEST_F(StoresWindow, DescribesAStoreByItsServerAndWhereThisComputerIs) {
  const std::string address = Store("s1", "One").url;
  const std::size_t host = address.find("localhost:");
  const std::string server = address.substr(host, address.find('/', host) - host);
  Reader().WaitUntil("the description", [&] {
    return Reader().WaitFor(Role::ListItem, "One").description.starts_with("\u2068" + server + "\u2069, ");
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

constexpr char kReason[] = "LAN, \u20681\u2069 von \u20681\u2069 internen Prüfadressen erreichbar";

TEST_F(StoresWindowInGerman, SaysWhyThisComputerIsThere) {
  AwaitRow("Im Netz des Stores", kReason);
}

TEST_F(StoresWindowInGerman, SaysWhatTheCheckFinds) {
  Press("Prüfen");
  AwaitRow("Server", "\u2068" + Store("s1", "One").url +
                         "\u2069: antwortet, und dieser Rechner vertraut dem Zertifikat, ausgestellt von "
                         "\u2068Morvane Test Authority\u2069.");
  AwaitRow("Standort", std::string("LAN: Dieser Rechner ist im Netz des Stores. Grund: ") + kReason + ".");
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

TEST_F(StoresWindow, NamesWhatItFindsAndAsksWithoutAComplaintOfTheToolkit) {
  Press("Check");
  Reader().WaitFor(Role::ListItem, "Location");
  ExpectEveryControlNamedOnce();
  Type("F10");
  Reader().WaitFor(Role::CheckMenuItem, "Write a Log");
  ExpectEveryControlNamedOnce();
  Type("Escape");
  Reader().WaitUntilGone(Role::CheckMenuItem, "Write a Log");
  Press("Remove Store…");
  Usable(Role::PushButton, "Remove");
  ExpectEveryControlNamedOnce();
  Press("Remove");
  Reader().WaitUntilGone(Role::ListItem, "One");
  Press("Remove Store…");
  Press("Remove");
  Reader().WaitFor(Role::PushButton, "Add From File…");
  ExpectEveryControlNamedOnce();
  window_->Signal(SIGTERM);
  window_->Wait();
  ExpectNoComplaints(window_->Output());
}

TEST_F(StoresWindow, OffersToStartTheAgentAgainWhenItHasEnded) {
  const std::string ended = "The background service has ended. What is shown may be out of date.";
  Reader().WaitFor(Role::ListItem, "Two");
  EXPECT_EQ(Count([](const Control& control) { return control.role == Role::Alert; }), 0);
  agent_.Terminate();
  Reader().WaitFor(Role::Alert, ended);
  Press("Start It Again");
  Reader().WaitUntilGone(Role::Alert, ended);
  EXPECT_TRUE(agent_.Bus().HasOwner("com.morvane.ServiceRecords"));
  Reader().WaitFor(Role::ListItem, "Two");
}

}  // namespace
