#include "desktop/DesktopTest.h"
#include "libs/Files/UserDefaults.h"
#include "support/LoopbackListener.h"

#include <algorithm>
#include <csignal>
#include <optional>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using TestSupport::ChildProcess;
using TestSupport::Control;
using TestSupport::Role;
using TestSupport::State;
using TestSupport::VirtualDesktopTest;

constexpr char kTitle[] = "Application Stores";
constexpr char kChooser[] = "Add Stores From File";

// The window, and an agent that has two stores.
class StoresWindow : public VirtualDesktopTest {
 protected:
  void SetUp() override {
    agent_.Start();
    Fill();
    Show();
  }
  virtual void Fill() {
    Hold(Store("s1", "One"));
    Hold(Store("s2", "Two"));
  }
  virtual void Show() {
    window_.emplace(StartStoresWindow());
    Reader().WaitFor(Role::Frame, kTitle);
  }

  // As other programs of the desktop do. `parameter`: as GLib prints it.
  void Activate(const std::string& action, const std::string& parameter = {}) const {
    std::vector<std::string> command{"gapplication", "action", "com.morvane.ServiceRecords.Stores", action};
    if (!parameter.empty()) command.push_back(parameter);
    ChildProcess desktop(command, agent_.Environment());
    ASSERT_EQ(desktop.Wait(), 0);
  }

  // Types the file's path into the file chooser that is about to come.
  void Choose(const std::string& file) {
    AwaitFocus(State::Focusable);
    Focus(kChooser);  // the desktop has no window manager that does
    Write("/");
    AwaitFocus(State::Editable);
    Write(file.substr(1));
    Type("shift+End");  // what the chooser completes while it is typed may come late
    Type("Delete");
    Type("Return");
    Reader().WaitUntil("the end of the file chooser", [&] { return !Chooser().has_value(); });
  }

  std::optional<ChildProcess> window_;

 private:
  // Releases of the toolkit differ in its role.
  [[nodiscard]] std::optional<Control> Chooser() {
    for (const Control& control : Reader().Controls()) {
      if (control.name == kChooser) return control;
    }
    return std::nullopt;
  }

  // Until something of that state has the focus in the file chooser.
  void AwaitFocus(State state) {
    Reader().WaitUntil("the focus in the file chooser", [&] {
      const std::optional<Control> chooser = Chooser();
      if (!chooser) return false;
      const std::vector<Control> controls = Reader().Controls(*chooser);
      return std::any_of(controls.begin(), controls.end(), [state](const Control& control) {
        return control.Is(State::Focused) && control.Is(state);
      });
    });
  }
};

class EmptyStoresWindow : public StoresWindow {
 protected:
  void Fill() override {}
  // Without the sanitizer's look for lost memory: a library of the file chooser (libcloudproviders) loses
  // some.
  void Show() override {
    window_.emplace(StartStoresWindow({"ASAN_OPTIONS=detect_leaks=0:intercept_tls_get_addr=0"}));
    Reader().WaitFor(Role::Frame, kTitle);
  }
};

class StoresWindowInGerman : public StoresWindow {
 protected:
  void SetUp() override {
    if (!IsTranslated()) GTEST_SKIP() << "there is no locale here in which the C library translates";
    StoresWindow::SetUp();
  }
  // The agent and srctl know nothing of the language.
  void Show() override {
    window_.emplace(StartStoresWindow(kGerman));
    Reader().WaitFor(Role::Frame, "Anwendungs-Stores");
  }
  void AwaitRow(const std::string& title, const std::string& text) {
    Reader().WaitUntil(text, [&] {
      return Count([&](const Control& control) {
               return control.name == title && control.description == text;
             }) == 1;
    });
  }

 private:
  // The only locale that is everywhere. Newer C libraries translate nothing in it.
  const std::vector<std::string> kGerman{"LC_ALL=C.UTF-8", "LANGUAGE=de"};

  [[nodiscard]] bool IsTranslated() const {
    std::vector<std::string> environment = kGerman;
    environment.push_back("TEXTDOMAINDIR=" + (agent_.Prefix() / "share/locale").string());
    ChildProcess lookUp({"gettext", "-d", "servicerecords", kTitle}, environment);
    lookUp.Wait();
    return lookUp.Output() != kTitle;
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

constexpr char kWhatToDo[] =
    "Open the service-record file that your administrator gave you, or drop it here. Its name usually ends "
    "in .cr.";

TEST_F(EmptyStoresWindow, SaysWhatToDo) {
  Reader().WaitFor(Role::Label, kWhatToDo);
  Reader().WaitFor(Role::PushButton, "Add From File…");
}

TEST_F(StoresWindow, DoesNotSayWhatToDoWhereThereAreStores) {
  Reader().WaitFor(Role::ListItem, "Two");
  EXPECT_EQ(Count([](const Control& control) { return control.name == kWhatToDo; }), 0);
}

TEST_F(EmptyStoresWindow, AddsTheStoreOfAFileThatIsChosenByTheKeyboardAlone) {
  Reader().WaitFor(Role::Label, kWhatToDo);
  Type("ctrl+o");
  Choose(OpenableFile("one.cr", {Store("s1", "One")}));
  Press("Add store");
  Reader().WaitFor(Role::Alert, "“\u2068One\u2069” was added.");
  Reader().WaitFor(Role::ListItem, "One");
  Reader().WaitFor(Role::Heading, "One");
}

TEST_F(EmptyStoresWindow, TellsWhatBecameOfEachFileThatIsBeingOpened) {
  Reader().WaitFor(Role::Label, kWhatToDo);
  Type("ctrl+o");
  Choose(OpenableFile("beta.cr", {Store("s1", "Beta")}));
  Usable(Role::PushButton, "Add store");
  Activate("add");
  Choose(agent_.Write("alpha.cr", "no XML").string());
  const std::string alpha =
      "“\u2068alpha.cr\u2069” is not a service record. Open the file that your administrator gave you.";
  Reader().WaitFor(Role::Alert, alpha);
  Press("Don’t add");
  Reader().WaitFor(Role::Alert,
                   alpha + "\n“\u2068Beta\u2069” was not added, because you decided against it.");
}

TEST_F(StoresWindow, ShowsTheStoreThatAnotherProgramWants) {
  Reader().WaitFor(Role::Heading, "One");
  Activate("show-store", "'s2'");
  Reader().WaitFor(Role::Heading, "Two");
  Activate("show-store", "'s3'");
  Hold(Store("s3", "Three"));
  Reader().WaitFor(Role::Heading, "Three");
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

TEST_F(StoresWindow, ListsOnlyWhatIsSearchedFor) {
  Reader().WaitFor(Role::ListItem, "Two");
  TabTo(Role::Entry, "Search stores");
  Write("tw");
  Reader().WaitUntilGone(Role::ListItem, "One");
  Reader().WaitFor(Role::ListItem, "Two");
  Write("x");
  Reader().WaitFor(Role::Label, "No Store Found");
  Activate("show-store", "'s1'");
  Reader().WaitFor(Role::ListItem, "One");
}

TEST_F(StoresWindow, SwitchesTheLogOnAndOff) {
  const Files::UserDefaults preferences(agent_.ConfigFolder() / "com.morvane.ServiceRecords.plist");
  Reader().WaitFor(Role::ListItem, "Two");
  for (const int level : {1, 0}) {
    Type("F10");
    ASSERT_TRUE(Reader().Press(Usable(Role::CheckMenuItem, "Write a Log")));
    Reader().WaitUntil("the setting", [&] { return preferences.Integer("LogLevel") == level; });
    Reader().WaitUntilGone(Role::CheckMenuItem, "Write a Log");
  }
  EXPECT_TRUE(agent_.Bus().WaitUntil([&] {
    const auto seen = agent_.Bus().Notifications();
    return std::count(seen.begin(), seen.end(),
                      "com.morvane.quillon.ServiceRecordsLoggingConfigurationDidChange ") == 2;
  })) << "the agent is told each time";
}

TEST_F(EmptyStoresWindow, StopsACheckWhoseServerNeverAnswers) {
  const TestSupport::LoopbackListener silent;
  TestSupport::StoreText store = Store("s1", "One");
  store.gateways[0].location = "https://localhost:" + std::to_string(silent.port);
  Hold(store);
  Press("Check");
  Reader().WaitFor(Role::ListItem, "Server");
  Reader().WaitFor(Role::Label, "Asking the servers of the store…");
  Press("Stop");
  Usable(Role::PushButton, "Check");
  Reader().WaitFor(Role::ListItem, "Server");
}

TEST_F(EmptyStoresWindow, StaysUnseenForTheQuestionOfAFileWhenItIsClosed) {
  Reader().WaitFor(Role::Label, kWhatToDo);
  Type("ctrl+o");
  Choose(OpenableFile("one.cr", {Store("s1", "One")}));
  Usable(Role::PushButton, "Add store");
  EXPECT_THAT(StoreIDs(), IsEmpty());
  Activate("quit");
  Reader().WaitUntilGone(Role::Frame, kTitle);
  Press("Add store");
  EXPECT_EQ(window_->Wait(), 0);
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

}  // namespace
