#include "desktop/DesktopTest.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <sstream>

namespace TestSupport {

namespace fs = std::filesystem;

using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

namespace {

const fs::path kSystem = "/usr/share";

// Which can have the focus, but only hold what is used.
constexpr std::array kHolders{Role::ScrollPane, Role::List};

bool IsUsed(const Control& control) {
  return control.Is(State::Focusable) &&
         std::find(kHolders.begin(), kHolders.end(), control.role) == kHolders.end();
}

// The toolkit says a name twice where two things give it.
bool IsSaidTwice(const std::string& name) {
  const std::size_t half = name.size() / 2;
  return name.size() % 2 == 1 && name[half] == ' ' && name.substr(0, half) == name.substr(half + 1);
}

// What the toolkit says of a widget without a name.
bool IsOfTheToolkit(const std::string& name) {
  return name.starts_with("Gtk") || name.starts_with("Adw");
}

}  // namespace

DesktopTest::DesktopTest(const std::vector<std::string>& screen) : AgentTest(screen) {
  InstallDesktop();
  reader_ = std::make_unique<ScreenReader>(agent_.BusAddress());
}

void DesktopTest::InstallDesktop() {
  const fs::path share = agent_.Prefix() / "share";
  const fs::path more = agent_.Home() / ".local/share";
  fs::create_directories(more);
  for (const char* const part : {"icons", "mime"}) fs::create_directory_symlink(kSystem / part, more / part);
  fs::create_directory_symlink(kSystem / "glib-2.0", share / "glib-2.0");
  fs::copy_file(kSystem / "dbus-1/services/org.a11y.Bus.service",
                share / "dbus-1/services/org.a11y.Bus.service");
  agent_.Bus().Call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReloadConfig");
}

void DesktopTest::BeginToOpen(const std::string& file) {
  opening_ = agent_.Bus().StartServiceRecords("handleServiceRecordFTA", {file});
}

void DesktopTest::AwaitHandled() {
  agent_.Bus().WaitForReply(opening_);
}

void DesktopTest::Press(const std::string& button) {
  ASSERT_TRUE(Reader().Press(Usable(Role::PushButton, button)));
}

void DesktopTest::Hold(const StoreText& store) {
  BeginToOpen(OpenableFile(store.id + ".cr", {store}));
  Press("Add store");
  AwaitHandled();
  // Its program may end later than it answers, and must not be taken for the next one.
  Reader().WaitUntilGone(Role::PushButton, "Add store");
}

ChildProcess DesktopTest::StartStoresWindow(const std::vector<std::string>& environment) {
  std::vector<std::string> variables = agent_.Environment();
  variables.insert(variables.end(), environment.begin(), environment.end());
  return ChildProcess({(agent_.Prefix() / "bin/servicerecords-stores").string()}, variables,
                      {.captureErrors = true});
}

std::ptrdiff_t DesktopTest::Count(const std::function<bool(const Control&)>& isSuch) {
  const std::vector<Control> controls = Reader().Controls();
  return std::count_if(controls.begin(), controls.end(), isSuch);
}

void DesktopTest::ExpectEveryControlNamedOnce() {
  std::size_t used = 0;
  for (const Control& control : Reader().Controls()) {
    if (!IsUsed(control)) continue;
    ++used;
    const std::string what =
        "\"" + control.name + "\" with role " + std::to_string(static_cast<unsigned>(control.role));
    EXPECT_FALSE(control.name.empty() || IsOfTheToolkit(control.name)) << what << " has no name";
    EXPECT_FALSE(IsSaidTwice(control.name)) << what << " has its name twice";
    EXPECT_TRUE(control.role != Role::Unknown && control.role != Role::Filler) << what << " has no role";
  }
  EXPECT_GE(used, 2U) << "no window was looked at";
}

void DesktopTest::ExpectNoComplaints(const std::string& output) {
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    // That is libadwaita 1.7 at odds with GTK over the labels of its own questions.
    if (line.find("Trying to measure GtkLabel") != std::string::npos) continue;
    EXPECT_THAT(line, Not(AnyOf(HasSubstr("WARNING"), HasSubstr("CRITICAL"))));
  }
}

void VirtualDesktopTest::TabTo(Role role, const std::string& name) {
  constexpr int kMostControls = 40;
  const auto isThere = [&](const Control& control) {
    return control.role == role && control.name == name && control.Is(State::Focused);
  };
  for (int i = 0; i < kMostControls; ++i) {
    if (Count(isThere) == 1) return;
    Type("Tab");
  }
  FAIL() << "the Tab key does not come to " << name;
}

}  // namespace TestSupport
