#include "desktop/DesktopTest.h"

namespace {

using TestSupport::Control;
using TestSupport::Role;
using TestSupport::State;
using TestSupport::StoreText;
using TestSupport::VirtualDesktopTest;

constexpr char kTitle[] = "Problem with a service record";

class ErrorDialog : public VirtualDesktopTest {
 protected:
  // Opens a file with these stores, whose servers cannot be verified: nobody listens there.
  void OpenInVain(const std::vector<StoreText>& stores) {
    StartAgent();
    Open(OpenableFile("bad.cr", stores));
    Reader().WaitFor(Role::Dialog, kTitle);
  }

  // Begins to open a file with "One" and "Two", which nobody reaches, and "Three", whose server has no
  // document. Whether "Three" is trusted is asked meanwhile.
  void BeginToOpenThree() {
    StartAgent();
    StoreText unconfirmed = Store("s3", "Three");
    const std::string file =
        OpenableFile("three.cr", {Unreachable("s1", "One"), Unreachable("s2", "Two"), unconfirmed});
    Serve(unconfirmed, "no discovery document");
    BeginToOpen(file);
  }

  [[nodiscard]] StoreText Unreachable(const std::string& id, const std::string& name) const {
    StoreText store = Store(id, name);
    store.url = "https://localhost:1/" + id + "/discovery";
    store.gateways.clear();
    return store;
  }
};

TEST_F(ErrorDialog, ShowsAllErrorsOfAnOpeningInOneWindow) {
  OpenInVain({Unreachable("s1", "One"), Unreachable("s2", "Two")});
  const auto isServer = [](const Control& control) {
    return control.role == Role::Label && control.name == "localhost:1";
  };
  Reader().WaitUntil("the servers of both errors", [&] { return Count(isServer) == 2; });
  EXPECT_EQ(Count([](const Control& control) { return control.role == Role::Dialog; }), 1);
}

TEST_F(ErrorDialog, NamesTheStoreOfEachErrorAndSaysWhichOneIsInTheListAllTheSame) {
  BeginToOpenThree();
  Press("Add store");
  AwaitHandled();
  Reader().WaitFor(Role::Label, "The store is in your list all the same.");
  for (const char* const store : {"One", "Two", "Three"}) Reader().WaitFor(Role::Label, store);
  EXPECT_THAT(StoreIDs(), testing::ElementsAre("s3"));
}

TEST_F(ErrorDialog, SaysThatTheDetailsWereCopied) {
  OpenInVain({Unreachable("s1", "One")});
  Press("Copy details");
  Reader().WaitFor(Role::PushButton, "Copied");
}

TEST_F(ErrorDialog, OffersToCopyTheDetailsAgainWhenAFurtherErrorHasCome) {
  BeginToOpenThree();
  for (const char* const store : {"One", "Two"}) Reader().WaitFor(Role::Label, store);
  Press("Copy details");
  Reader().WaitFor(Role::PushButton, "Copied");
  Press("Add store");
  AwaitHandled();
  Reader().WaitFor(Role::PushButton, "Copy details");
}

TEST_F(ErrorDialog, HasTheFocusOnCloseAndGoesByTheEnterKey) {
  OpenInVain({Unreachable("s1", "One")});
  Reader().WaitFor(Role::PushButton, "Close", State::Focused);
  Type("Return");
  Reader().WaitUntilGone(Role::Dialog, kTitle);
}

TEST_F(ErrorDialog, GoesByTheEscapeKey) {
  OpenInVain({Unreachable("s1", "One")});
  Reader().WaitFor(Role::PushButton, "Close", State::Focused);
  Type("Escape");
  Reader().WaitUntilGone(Role::Dialog, kTitle);
}

TEST_F(ErrorDialog, GivesTheToolkitNothingToComplainOf) {
  OpenInVain({Unreachable("s1", "One"), Unreachable("s2", "Two")});
  Press("Copy details");
  Press("Close");
  Reader().WaitUntilGone(Role::Dialog, kTitle);
  ExpectNoComplaints(agent_.Output());
}

TEST_F(ErrorDialog, NamesEveryControlOnce) {
  OpenInVain({Unreachable("s1", "One")});
  ExpectEveryControlNamedOnce();
}

}  // namespace
