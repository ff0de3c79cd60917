#include "MacISRNotificationManager.h"
#include "SRLib/SRProvider.h"
#include "fakes/PartsOfTheProcess.h"
#include "libs/Files/Bundle.h"
#include "libs/Lifetime/UniqueHandle.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/Termination/TerminationEvent.h"
#include "support/TemporaryFolder.h"
#include "ui/RecordingUI.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <cstdlib>
#include <limits>

// The test program's own folder has a plug-in bundle with the recording module.
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;
using ServiceRecords::GatewayLabel;
using ServiceRecords::MacIServiceRecordsNotifications;

class NotificationsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(MacIServiceRecordsNotifications::SRUIClass(), nullptr);
    const auto path =
        Files::Bundle::Main().BuiltInPlugInsPath() / "ServiceRecordUI.bundle" / "RecordingUI.so";
    module_.reset(::dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD));
    ASSERT_NE(module_, nullptr);
    const auto lastDialog = reinterpret_cast<decltype(&LastDialog)>(::dlsym(module_.get(), "LastDialog"));
    ASSERT_NE(lastDialog, nullptr);
    last_ = lastDialog();
  }

  void TearDown() override {
    if (last_ != nullptr) last_->answer = 0;
  }

  [[nodiscard]] Dictionary Details() const {
    const auto root = PropertyList::Read(last_->details);
    const Dictionary* details = root ? root->As<Dictionary>() : nullptr;
    return details != nullptr ? *details : Dictionary();
  }

  std::int32_t ShowTrustDialog(const GatewayLabel& defaultGateway, const std::vector<GatewayLabel>& others) {
    return notifications_.ShowTrustDialog(L"store.example.com", L"Morvane", L"Sales",
                                          L"https://store.example.com", defaultGateway, others);
  }

  static Dictionary Gateway(const char* name, const char* url, bool isDefault) {
    return {{"GatewayName", name}, {"GatewayURL", url}, {"IsDefault", isDefault}};
  }

  Lifetime::UniqueHandle<void, ::dlclose> module_;
  RecordedDialog* last_ = nullptr;
  MacIServiceRecordsNotifications notifications_;
};

TEST_F(NotificationsTest, TheTrustDialogHasTheStoreAndItsGatewaysInOrder) {
  ShowTrustDialog({L"Main", L"https://main"}, {{L"B", L"https://b"}, {L"A", L"https://a"}});

  const Dictionary expected{
      {"StoreName", "Sales"},
      {"StoreProvider", "Morvane"},
      {"CertificateName", "store.example.com"},
      {"StoreURL", "https://store.example.com"},
      {"StoreGateways", Array{Gateway("Main", "https://main", true), Gateway("B", "https://b", false),
                              Gateway("A", "https://a", false)}}};
  EXPECT_STREQ(last_->dialog, "addStore");
  EXPECT_EQ(Details(), expected);
}

TEST_F(NotificationsTest, TheTrustDialogHasNoGatewaysKeyWithoutGateways) {
  ShowTrustDialog({L"Main", L""}, {});

  EXPECT_EQ(Details().Find("StoreGateways"), nullptr);
  EXPECT_EQ(Details().Entries().size(), 4U);
}

TEST_F(NotificationsTest, ADefaultGatewayWithoutAddressIsLeftOut) {
  ShowTrustDialog({L"Main", L""}, {{L"A", L"https://a"}, {L"B", L"https://b"}});

  const Dictionary details = Details();
  const PropertyList::Value* gateways = details.Find("StoreGateways");
  ASSERT_NE(gateways, nullptr);
  EXPECT_EQ(*gateways,
            PropertyList::Value(Array{Gateway("A", "https://a", false), Gateway("B", "https://b", false)}));
}

TEST_F(NotificationsTest, TheTrustDialogAnswers100OnlyWhenTheUserAccepts) {
  last_->answer = 1;
  EXPECT_EQ(ShowTrustDialog({L"Main", L"https://main"}, {}), 100);
  last_->answer = 0;
  EXPECT_EQ(ShowTrustDialog({L"Main", L"https://main"}, {}), 0);
}

TEST_F(NotificationsTest, NothingButOneIsConsent) {
  for (const int answer :
       {-1, 2, 100, 0x101, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    last_->answer = answer;
    EXPECT_EQ(ShowTrustDialog({L"Main", L"https://main"}, {}), 0) << answer;
    EXPECT_EQ(notifications_.ShowStoreReplaceDialog(L"Sales"), 0) << answer;
  }
}

TEST_F(NotificationsTest, TheReplaceDialogHasTheStoresNameOnly) {
  last_->answer = 1;

  EXPECT_EQ(notifications_.ShowStoreReplaceDialog(L"Sales"), 100);
  EXPECT_STREQ(last_->dialog, "replaceStore");
  EXPECT_EQ(Details(), (Dictionary{{"StoreName", "Sales"}}));

  last_->answer = 0;
  EXPECT_EQ(notifications_.ShowStoreReplaceDialog(L"Sales"), 0);
}

TEST_F(NotificationsTest, TheErrorDialogHasTitleAndMessageAndNoAnswer) {
  last_->answer = 1;

  EXPECT_EQ(notifications_.ShowSRErrorDialog(L"Title", L"First line\nsecond <line>"), -1);
  EXPECT_STREQ(last_->dialog, "errorMessage");
  EXPECT_EQ(Details(), (Dictionary{{"ErrorTitle", "Title"}, {"ErrorMessage", "First line\nsecond <line>"}}));
}

TEST_F(NotificationsTest, TheGatewayDialogAsksNobody) {
  const int calls = last_->calls;
  last_->answer = 1;

  EXPECT_EQ(notifications_.ShowGatewayTrustDialog(L"Main"), -1);
  EXPECT_EQ(last_->calls, calls);
}

TEST_F(NotificationsTest, NamesOutsideAsciiArriveIntact) {
  notifications_.ShowStoreReplaceDialog(L"M\u00FCnchen \u6771\u4EAC \U0001F3EA");

  EXPECT_EQ(Details(),
            (Dictionary{{"StoreName", "M\xC3\xBCnchen \xE6\x9D\xB1\xE4\xBA\xAC \xF0\x9F\x8F\xAA"}}));
}

TEST_F(NotificationsTest, TheModuleGetsTheAgentsTerminationDescriptor) {
  EXPECT_EQ(last_->terminationDescriptor, Termination::Descriptor());
}

TEST_F(NotificationsTest, InitMakesTheProviderUseThePlugIn) {
  ServiceRecords::SRProvider::Register(TestSupport::PartsOfTheProcess([] {}));
  MacIServiceRecordsNotifications::Init();

  auto* registered = ServiceRecords::SRProvider::Instance().Notification();
  ASSERT_NE(dynamic_cast<MacIServiceRecordsNotifications*>(registered), nullptr);
  MacIServiceRecordsNotifications::Init();
  EXPECT_EQ(ServiceRecords::SRProvider::Instance().Notification(), registered);
}

}  // namespace
