#include "desktop/DesktopTest.h"
#include "desktop/WaylandScreen.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using TestSupport::DesktopTestOn;
using TestSupport::Role;
using TestSupport::State;
using TestSupport::WaylandScreen;
using OnWayland = DesktopTestOn<WaylandScreen>;

TEST_F(OnWayland, AStoreIsAddedThroughTheTrustDialogAndListedInTheWindow) {
  agent_.Start();
  BeginToOpen(OpenableFile("a.cr", {Store("s1", "One")}));
  Usable(Role::PushButton, "Don’t add");  // without a keyboard, nothing need have the focus
  Press("Add store");
  AwaitHandled();
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
  const auto window = StartStoresWindow();
  Reader().WaitFor(Role::ListItem, "One");
}

TEST_F(OnWayland, AStoreThatIsDeclinedIsNotAdded) {
  agent_.Start();
  BeginToOpen(OpenableFile("a.cr", {Store("s1", "One")}));
  Press("Don’t add");
  AwaitHandled();
  EXPECT_THAT(StoreIDs(), IsEmpty());
}

}  // namespace
