#include "desktop/DesktopTest.h"
#include "support/NotificationService.h"

using testing::ElementsAre;

namespace {

using TestSupport::ChildProcess;
using TestSupport::NotificationService;
using TestSupport::VirtualDesktopTest;

// Nothing of ours runs before the file is opened.
class DoubleClick : public VirtualDesktopTest {
 protected:
  DoubleClick() : notifications_(agent_.BusAddress()) {}

  // As the desktop does for a double click.
  void OpenWithTheDefaultProgram(const std::string& file) const {
    ChildProcess desktop({"gio", "open", file}, agent_.Environment());
    ASSERT_EQ(desktop.Wait(), 0);
  }

  NotificationService notifications_;
};

TEST_F(DoubleClick, OnAFileAddsItsStoreWhichIsToldAndStaysAfterARestart) {
  OpenWithTheDefaultProgram(OpenableFile("a.cr", {Store("s1", "One")}));
  Press("Add store");
  ASSERT_TRUE(notifications_.WaitUntil([&] { return notifications_.Shown().size() == 1; }));
  EXPECT_EQ(notifications_.Shown()[0].summary, "One was added");
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
  agent_.EndActivated();
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

}  // namespace
