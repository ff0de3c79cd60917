#include "desktop/DesktopTest.h"

#include <csignal>
#include <fstream>
#include <functional>
#include <iterator>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

using TestSupport::Control;
using TestSupport::Role;
using TestSupport::State;
using TestSupport::VirtualDesktopTest;

constexpr char kTitle[] = "Add a store";
constexpr char kAdd[] = "Add store";
constexpr char kDecline[] = "Don’t add";

class TrustDialog : public VirtualDesktopTest {
 protected:
  void SetUp() override {
    StartAgent();
    BeginToAsk();
  }

  void BeginToAsk() {
    BeginToOpen(OpenableFile("a.cr", {Store("s1", "One")}));
    Reader().WaitFor(Role::Dialog, kTitle);
  }
  // Whether the button to add was seen to become sensitive in one of several dialogs, each of which is ended
  // by `decline`: on a busy machine it may be so before the screen reader hears of the program.
  [[nodiscard]] bool AddBecomesSensitive(const std::function<void()>& decline) {
    constexpr int kMostDialogs = 5;
    for (int dialogs = 1;; ++dialogs) {
      const Control add = Reader().WaitFor(Role::PushButton, kAdd);
      decline();
      AwaitHandled();
      if (Reader().HasBecomeSensitive(add)) return true;
      if (dialogs == kMostDialogs) return false;
      BeginToAsk();
    }
  }
};

TEST_F(TrustDialog, AddsTheStoreOnceItsButtonCanBePressed) {
  Press(kAdd);
  AwaitHandled();
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

TEST_F(TrustDialog, AddsNothingWhenDeclined) {
  Press(kDecline);
  AwaitHandled();
  EXPECT_THAT(StoreIDs(), IsEmpty());
}

TEST_F(TrustDialog, LetsNobodyAddAtOnce) {
  EXPECT_TRUE(AddBecomesSensitive([&] {
    Usable(Role::PushButton, kAdd);
    Type("Escape");
  })) << "it was sensitive from the beginning";
}

TEST_F(TrustDialog, TakesNoKeyBeforeItCanBeAnswered) {
  EXPECT_TRUE(AddBecomesSensitive([&] {
    Reader().WaitUntil("the answer by the Enter key", [&] {
      Type("Return");
      return Count([](const Control& control) { return control.role == Role::Dialog; }) == 0;
    });
  })) << "a key has answered it at once";
  EXPECT_THAT(StoreIDs(), IsEmpty());
}

TEST_F(TrustDialog, HasTheFocusOnTheSafeAnswer) {
  Reader().WaitFor(Role::PushButton, kDecline, State::Focused);
}

TEST_F(TrustDialog, DeclinesByTheEnterKey) {
  Usable(Role::PushButton, kAdd);
  Type("Return");
  AwaitHandled();
  EXPECT_THAT(StoreIDs(), IsEmpty());
}

TEST_F(TrustDialog, DeclinesByTheEscapeKey) {
  Usable(Role::PushButton, kAdd);
  Type("Escape");
  AwaitHandled();
  EXPECT_THAT(StoreIDs(), IsEmpty());
}

TEST_F(TrustDialog, AddsByTheKeyboardAlone) {
  Usable(Role::PushButton, kAdd);
  Type("Tab");
  Reader().WaitFor(Role::PushButton, kAdd, State::Focused);
  Type("Return");
  AwaitHandled();
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

TEST_F(TrustDialog, GivesTheToolkitNothingToComplainOf) {
  Press(kAdd);
  AwaitHandled();
  ExpectNoComplaints(agent_.Output());
}

TEST_F(TrustDialog, NamesEveryControlOnce) {
  ExpectEveryControlNamedOnce();
}

TEST_F(TrustDialog, LeavesTheAgentWithoutAToolkit) {
  std::ifstream maps("/proc/" + std::to_string(agent_.Pid()) + "/maps");
  const std::string mapped{std::istreambuf_iterator<char>(maps), {}};
  EXPECT_THAT(mapped, HasSubstr("ServiceRecordUI.so"));
  EXPECT_THAT(mapped, Not(HasSubstr("libgtk")));
}

TEST_F(TrustDialog, GoesWhenTheAgentIsKilled) {
  ::kill(agent_.Pid(), SIGKILL);
  Reader().WaitUntilGone(Role::Dialog, kTitle);
  EXPECT_EQ(agent_.WaitForEnd(), 128 + SIGKILL);
}

}  // namespace
