#include "MacISRNotificationManager.h"
#include "libs/Files/Bundle.h"
#include "support/CapturedSystemLog.h"

#include <gmock/gmock.h>

// The test program's own folder has a plug-in bundle whose principal class has another protocol.
namespace {

using ServiceRecords::MacIServiceRecordsNotifications;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;

class UnusablePlugInTest : public ::testing::Test {
 protected:
  TestSupport::CapturedSystemLog systemLog_;
};

auto NamesTheBundle() {
  const auto bundle = Files::Bundle::Main().BuiltInPlugInsPath() / "ServiceRecordUI.bundle";
  return ElementsAre(AllOf(HasSubstr("MacIServiceRecordsNotifications::SRUIClass()"),
                           EndsWith(" - " + bundle.string() + " does not conform to protocol")));
}

TEST_F(UnusablePlugInTest, TheTrustDialogDeclinesAndTheSystemLogNamesTheBundle) {
  EXPECT_EQ(MacIServiceRecordsNotifications().ShowTrustDialog(L"c", L"p", L"n", L"u", {L"g", L"h"}, {}), 0);
  EXPECT_THAT(systemLog_.TakeLines(), NamesTheBundle());
}

TEST_F(UnusablePlugInTest, TheReplaceDialogDeclinesAndTheSystemLogNamesTheBundle) {
  EXPECT_EQ(MacIServiceRecordsNotifications().ShowStoreReplaceDialog(L"n"), 0);
  EXPECT_THAT(systemLog_.TakeLines(), NamesTheBundle());
}

TEST_F(UnusablePlugInTest, TheErrorDialogIsSkipped) {
  EXPECT_EQ(MacIServiceRecordsNotifications().ShowSRErrorDialog(L"t", L"m"), -1);
  EXPECT_THAT(systemLog_.TakeLines(), NamesTheBundle());
}

}  // namespace
