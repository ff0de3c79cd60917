#include "desktop/DesktopTest.h"

namespace {

using TestSupport::Role;
using TestSupport::State;
using TestSupport::VirtualDesktopTest;

constexpr char kTitle[] = "Replace a store";
constexpr char kReplace[] = "Replace store";
constexpr char kKeep[] = "Keep store";

// The list holds "Old"; whether "New" replaces it is asked.
class ReplaceDialog : public VirtualDesktopTest {
 protected:
  void SetUp() override {
    StartAgent();
    Hold(Store("s1", "Old"));
    BeginToOpen(OpenableFile("new.cr", {Store("s1", "New")}));
    Press("Add store");
    Reader().WaitFor(Role::Dialog, kTitle);
  }

  [[nodiscard]] std::string NameInList() {
    return agent_.Bus().ServiceRecords("storeForID", {"s1"})["StoreName"];
  }
};

TEST_F(ReplaceDialog, ReplacesTheStore) {
  Press(kReplace);
  AwaitHandled();
  EXPECT_EQ(NameInList(), "New");
}

TEST_F(ReplaceDialog, KeepsTheStoreWhenDeclined) {
  Press(kKeep);
  AwaitHandled();
  EXPECT_EQ(NameInList(), "Old");
}

TEST_F(ReplaceDialog, HasTheFocusOnTheSafeAnswerWhichEnterGives) {
  Reader().WaitFor(Role::PushButton, kKeep, State::Focused);
  Usable(Role::PushButton, kReplace);
  Type("Return");
  AwaitHandled();
  EXPECT_EQ(NameInList(), "Old");
}

TEST_F(ReplaceDialog, KeepsTheStoreByTheEscapeKey) {
  Usable(Role::PushButton, kReplace);
  Type("Escape");
  AwaitHandled();
  EXPECT_EQ(NameInList(), "Old");
}

TEST_F(ReplaceDialog, GivesTheToolkitNothingToComplainOf) {
  Press(kReplace);
  AwaitHandled();
  ExpectNoComplaints(agent_.Output());
}

TEST_F(ReplaceDialog, NamesEveryControlOnce) {
  ExpectEveryControlNamedOnce();
}

}  // namespace
