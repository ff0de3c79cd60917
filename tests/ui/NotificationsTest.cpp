#include "MacISRNotificationManager.h"
#include "SRLib/Provider/DialogSubject.h"
#include "SRLib/Provider/Opening.h"
#include "SRLib/SRProvider.h"
#include "fakes/FakeConfigurator.h"
#include "fakes/PartsOfTheProcess.h"
#include "libs/Files/Bundle.h"
#include "libs/Files/EventFd.h"
#include "libs/Lifetime/UniqueHandle.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/Termination/TerminationEvent.h"
#include "libs/Text/TextHelpers.h"
#include "support/StoreBuilders.h"
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
using ServiceRecords::DialogSubject;
using ServiceRecords::GatewayLabel;
using ServiceRecords::MacIServiceRecordsNotifications;
using ServiceRecords::Opening;
using ServiceRecords::Replacement;
using ServiceRecords::ServerProblem;
using ServiceRecords::VerifiedServer;

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
  ShowTrustDialog({L"", L""}, {});

  EXPECT_EQ(Details().Find("StoreGateways"), nullptr);
  EXPECT_EQ(Details().Entries().size(), 4U);
}

TEST_F(NotificationsTest, ADefaultGatewayWithoutAddressIsNamedApart) {
  ShowTrustDialog({L"Main", L""}, {{L"A", L"https://a"}, {L"B", L"https://b"}});

  const Dictionary details = Details();
  const PropertyList::Value* gateways = details.Find("StoreGateways");
  ASSERT_NE(gateways, nullptr);
  EXPECT_EQ(*gateways,
            PropertyList::Value(Array{Gateway("A", "https://a", false), Gateway("B", "https://b", false)}));
  EXPECT_EQ(*details.Find("DefaultGatewayWithoutURL"), PropertyList::Value("Main"));
  ShowTrustDialog({L"Main", L""}, {});
  EXPECT_EQ(Details().Find("StoreGateways"), nullptr);
  EXPECT_EQ(*Details().Find("DefaultGatewayWithoutURL"), PropertyList::Value("Main"));
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

TEST_F(NotificationsTest, TheDialogsOfAnOpeningBearItsNumberAndPathAndGetWhereItIsAsked) {
  const Files::EventFd withdrawal;
  Opening opening({.id = 7,
                   .path = "/home/me/Stores.cr",
                   .terminalDescriptor = 77,
                   .desktop = {"DISPLAY=:7"},
                   .withdrawalDescriptor = withdrawal.Descriptor()});
  const Opening::Handling handling(opening);
  notifications_.ShowSRErrorDialog(L"Title", L"Message");
  const Dictionary expected{{"ErrorTitle", "Title"},
                            {"ErrorMessage", "Message"},
                            {"OpeningID", std::uint64_t{7}},
                            {"DocumentPath", "/home/me/Stores.cr"}};
  EXPECT_EQ(Details(), expected);
  EXPECT_EQ(last_->terminalDescriptor, 77);
  EXPECT_STREQ(last_->desktop, "DISPLAY=:7");
  EXPECT_EQ(last_->withdrawalDescriptor, withdrawal.Descriptor());
  notifications_.ShowStoreReplaceDialog(L"Sales");
  EXPECT_EQ(*Details().Find("OpeningID"), PropertyList::Value(std::uint64_t{7}));
  ShowTrustDialog({L"", L""}, {});
  EXPECT_EQ(*Details().Find("OpeningID"), PropertyList::Value(std::uint64_t{7}));
}

TEST_F(NotificationsTest, WithoutAnOpeningItIsTheModulesToChooseWhereItIsAsked) {
  notifications_.ShowSRErrorDialog(L"Title", L"Message");
  EXPECT_EQ(last_->terminalDescriptor, -1);
  EXPECT_STREQ(last_->desktop, "");
  EXPECT_EQ(last_->withdrawalDescriptor, -1);
}

TEST_F(NotificationsTest, AWithdrawnOpeningShowsNoDialog) {
  const Files::EventFd withdrawal;
  Opening opening({.id = 7, .path = "", .withdrawalDescriptor = withdrawal.Descriptor()});
  const Opening::Handling handling(opening);
  const int calls = last_->calls;
  last_->answer = 1;
  withdrawal.Raise();
  EXPECT_EQ(ShowTrustDialog({L"", L""}, {}), 0);
  EXPECT_EQ(notifications_.ShowStoreReplaceDialog(L"Sales"), 0);
  EXPECT_EQ(notifications_.ShowSRErrorDialog(L"Title", L"Message"), -1);
  EXPECT_EQ(last_->calls, calls);
}

TEST_F(NotificationsTest, TheTrustDialogNamesTheHostsInBothForms) {
  const DialogSubject subject(VerifiedServer{L"https://xn--mnchen-3ya.example:8443/gateway", true});
  notifications_.ShowTrustDialog(L"Issuer", L"Operator", L"Sales", L"https://M\u00FCnchen.Example/discovery",
                                 {}, {});
  const Dictionary details = Details();
  EXPECT_EQ(*details.Find("StoreHost"), PropertyList::Value("m\u00FCnchen.example"));
  EXPECT_EQ(*details.Find("StoreHostASCII"), PropertyList::Value("xn--mnchen-3ya.example"));
  EXPECT_EQ(*details.Find("VerifiedHost"), PropertyList::Value("m\u00FCnchen.example"));
  EXPECT_EQ(*details.Find("VerifiedHostASCII"), PropertyList::Value("xn--mnchen-3ya.example"));
  EXPECT_EQ(*details.Find("VerifiedServer"), PropertyList::Value("gateway"));
}

TEST_F(NotificationsTest, AHostThatIsAsciiIsNamedOnce) {
  const DialogSubject subject(VerifiedServer{L"https://store.example.com", false});
  ShowTrustDialog({L"", L""}, {});
  EXPECT_EQ(*Details().Find("StoreHost"), PropertyList::Value("store.example.com"));
  EXPECT_EQ(Details().Find("StoreHostASCII"), nullptr);
  EXPECT_EQ(Details().Find("VerifiedHostASCII"), nullptr);
  EXPECT_EQ(*Details().Find("VerifiedServer"), PropertyList::Value("store"));
}

TEST_F(NotificationsTest, TheReplaceDialogHasTheStoreAsItIsAndAsItWouldBe) {
  using namespace TestSupport;
  ServiceRecords::SRStore held =
      Store(L"s", L"https://old", {TestSupport::Gateway(L"GW", L"https://gw", true)});
  held.AddBeacon(Beacon(L"in"), ServiceRecords::BeaconType::Internal);
  held.GetGateways().front().SetAuthentication(ServiceRecords::SRGateway::GatewayAuthentication::SMS);
  held.GetGateways().front().SetEdition(ServiceRecords::SRGateway::GatewayEdition::Enterprise);
  held.GetGateways().front().SetAGMode(ServiceRecords::SRGateway::AGMode::FB_RW);
  const ServiceRecords::SRStore incoming =
      Store(L"s", L"https://new", {TestSupport::Gateway(L"New", L"https://n", true)});
  const FakeConfigurator configuration;
  const DialogSubject subject(Replacement{held, incoming, configuration});
  notifications_.ShowStoreReplaceDialog(L"Sales");
  const Dictionary details = Details();
  const Dictionary gateway{{"GatewayName", "GW"},
                           {"GatewayURL", "https://gw"},
                           {"IsDefault", true},
                           {"GatewayAuthType", std::uint32_t{4}},
                           {"GatewayEdition", std::uint32_t{2}},
                           {"GatewayRewriteMode", std::uint32_t{2}}};
  const Dictionary heldRecord{{"StoreName", util::narrow(held.GetStoreName())},
                              {"StoreURL", "https://old"},
                              {"StoreHost", "old"},
                              {"StoreGateways", Array{gateway}},
                              {"InternalBeacons", Array{"in"}},
                              {"ExternalBeacons", Array{}}};
  EXPECT_EQ(*details.Find("HeldStore"), PropertyList::Value(heldRecord));
  const Dictionary& after = *details.Find("NewStore")->As<Dictionary>();
  EXPECT_EQ(*after.Find("StoreURL"), PropertyList::Value("https://new"));
  const Array& gateways = *after.Find("StoreGateways")->As<Array>();
  ASSERT_EQ(gateways.size(), 2U);
  EXPECT_EQ(gateways[0], PropertyList::Value(gateway));
  EXPECT_EQ(*gateways[1].As<Dictionary>()->Find("GatewayName"), PropertyList::Value("New"));
  EXPECT_EQ(*after.Find("InternalBeacons"), PropertyList::Value(Array{"in"}));
  EXPECT_EQ(*after.Find("ExternalBeacons"), PropertyList::Value(Array{"https://gw"}));
}

TEST_F(NotificationsTest, AnErrorNamesTheStoreAndItsServerAndSaysWhy) {
  const DialogSubject subject(
      ServerProblem{L"https://stores.example:8443/page", L"Sales", L"It has expired.", L"code 1"});
  notifications_.ShowSRErrorDialog(L"Title", L"Message");
  EXPECT_EQ(*Details().Find("StoreName"), PropertyList::Value("Sales"));
  EXPECT_EQ(*Details().Find("Server"), PropertyList::Value("stores.example:8443"));
  EXPECT_EQ(*Details().Find("ErrorReason"), PropertyList::Value("It has expired."));
  EXPECT_EQ(*Details().Find("ErrorDetails"), PropertyList::Value("code 1"));
}

TEST_F(NotificationsTest, NobodyToAskIsTakenDownAtTheOpening) {
  for (const auto& [answer, outcome] : {std::pair(SRUI_COULD_NOT_ASK, Openings::Outcome::CouldNotAsk),
                                        std::pair(0, Openings::Outcome::Declined)}) {
    Opening opening({});
    const Opening::Handling handling(opening);
    Opening::NoteStores({{L"s", TestSupport::Store(L"s", L"https://s")}});
    last_->answer = answer;
    EXPECT_EQ(ShowTrustDialog({L"", L""}, {}), 0);
    Opening::NoteDeclined(L"s");
    EXPECT_EQ(opening.GravestOutcome(), outcome);
  }
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
