#include "SRLib/Platform/SSLValidationDetails.h"
#include "core/ProviderTest.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

using namespace ServiceRecords;
using namespace std::string_literals;
using namespace TestSupport;
using ::testing::Return;

class OutboundUserConfirmTest : public ProviderTest {
 protected:
  // The path of a file with this content as the file-open event delivers it, quoted.
  std::wstring File(const std::wstring& content) {
    const auto path = folder_.Path() / "opened.cr";
    std::ofstream(path) << Narrow(content);
    return L"\"" + path.wstring() + L"\"";
  }

  // The id of the store for which Service() makes this address.
  static std::wstring Address(const std::wstring& id) {
    return L"https://" + id + L".example/store/discovery";
  }

  void Trust(const std::wstring& id) { validations_.Answer(Address(id), SSLOutcome::Trusted(L"O", L"I")); }

  Wide Confirm(const std::wstring& path) {
    StoreMap accepted = Map({Store(L"left over", L"")});
    provider_.OutboundUserConfirm(path, accepted);
    return Ids(accepted);
  }

  // The flow's own records from the first to the last.
  Records FlowRecords() {
    Records records = trace_.Records();
    std::erase_if(records, [](const TraceRecord& record) {
      return record.file != kProviderFile || record.text.starts_with("........->") ||
             record.text.starts_with(".......Validation");
    });
    return records;
  }

  static TraceRecord Started(const std::wstring& path) {
    return {0, kProviderFile, "-> Outbound SR User confirmation started" + Narrow(path)};
  }
  static TraceRecord Finished(const std::wstring& path) {
    return {0, kProviderFile, "<- Outbound SR User confirmation finished. File: " + Narrow(path)};
  }

  const TemporaryFolder folder_;
  const TraceRecord parsed_{0, kProviderFile, "...SR document parsed successfully."};
};

TEST_F(OutboundUserConfirmTest, AnAcceptedStoreIsSavedAndPublishedOnceWithoutDiscoveryTrust) {
  Trust(L"s");
  const std::wstring path = File(ServiceRecord(Service(L"s", L"<Internal><Beacon>in</Beacon></Internal>")));
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  EXPECT_EQ(Confirm(path), (Wide{L"s"}));
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"s"}));
  EXPECT_EQ(Ids(Repository().RestoreStores()), (Wide{L"s"}));
  EXPECT_FALSE(provider_.GetStores().at(L"s").Beacons(BeaconType::Internal).front().GetDSConfirmed());
  const auto publications = publications_.All();
  ASSERT_EQ(publications.size(), 1U);
  EXPECT_TRUE(publications.front().insideCriticalSection);
  EXPECT_EQ(FlowRecords(), (Records{Started(path), parsed_, Finished(path)}));
}

TEST_F(OutboundUserConfirmTest, APathOfThreeCharactersNamesAFileOfOne) {
  std::filesystem::current_path(folder_.Path());
  std::ofstream("x") << "";
  EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1600"s, L"message 1576"s));
  EXPECT_EQ(Confirm(L"|x|"), Wide{});
  EXPECT_EQ(FlowRecords(),
            (Records{Started(L"|x|"), {2, kProviderFile, "...message 1576"}, Finished(L"|x|")}));
}

TEST_F(OutboundUserConfirmTest, WhatCannotBeReadEndsAtOnceWithoutADialogOrAClosingRecord) {
  std::filesystem::current_path(folder_.Path());
  for (const wchar_t* path : {L"", L"'", L"''", L"'missing'", L"'.'"}) {
    trace_.Clear();
    EXPECT_EQ(Confirm(path), Wide{});
    EXPECT_EQ(trace_.Records(), (Records{Started(path), {2, kProviderFile, "...Failed to read SR file."}}));
  }
  EXPECT_FALSE(WasSaved());
}

TEST_F(OutboundUserConfirmTest, AFileWithoutStoresShowsAnErrorAndChangesNothing) {
  const std::wstring path = File(ServiceRecord(L""));
  EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1600"s, L"message 1576"s));
  EXPECT_EQ(Confirm(path), Wide{});
  EXPECT_FALSE(WasSaved());
  EXPECT_TRUE(publications_.All().empty());
  EXPECT_EQ(FlowRecords(), (Records{Started(path), {2, kProviderFile, "...message 1576"}, Finished(path)}));
}

TEST_F(OutboundUserConfirmTest, AStoreThatFailsTrustIsDroppedAndTheOtherIsTaken) {
  Trust(L"good");
  const std::wstring path = File(ServiceRecord(Service(L"good") + Service(L"bad")));
  EXPECT_CALL(notifications_, ShowSRErrorDialog(L"message 1600"s, L"no answer "s));
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  EXPECT_EQ(Confirm(path), (Wide{L"good"}));
  EXPECT_EQ(Ids(provider_.GetStores()), (Wide{L"good"}));
  EXPECT_EQ(Ids(Repository().RestoreStores()), (Wide{L"good"}));
  EXPECT_EQ(validations_.Validated(), (Wide{Address(L"bad"), Address(L"good")}));
  EXPECT_EQ(
      FlowRecords(),
      (Records{
          Started(path), parsed_, {0, kProviderFile, "......Failed trust for store: bad"}, Finished(path)}));
}

TEST_F(OutboundUserConfirmTest, WhenEveryStoreFailsTrustNothingIsMergedOrSaved) {
  Trust(L"a");
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(0));
  EXPECT_CALL(notifications_, ShowSRErrorDialog);
  EXPECT_EQ(Confirm(File(ServiceRecord(Service(L"a") + Service(L"b")))), Wide{});
  EXPECT_TRUE(provider_.GetStores().empty());
  EXPECT_FALSE(WasSaved());
  EXPECT_TRUE(publications_.All().empty());
}

TEST_F(OutboundUserConfirmTest, AHeldStoreIsReplacedInsideTheLockWhenTheUserAgrees) {
  Hold({Store(L"s", L"https://old")});
  Trust(L"s");
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  bool inside = false;
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog(L"Name of s"s))
      .WillOnce(::testing::DoAll([&inside] { inside = InsideCriticalSection(); }, Return(100)));
  EXPECT_EQ(Confirm(File(ServiceRecord(Service(L"s")))), (Wide{L"s"}));
  EXPECT_TRUE(inside);
  EXPECT_EQ(provider_.GetStores().at(L"s").GetStoreURL(), Address(L"s"));
}

TEST_F(OutboundUserConfirmTest, ADeclinedReplacementAloneChangesNothing) {
  Hold({Store(L"s", L"https://old")});
  Trust(L"s");
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog).WillOnce(Return(0));
  EXPECT_EQ(Confirm(File(ServiceRecord(Service(L"s")))), Wide{});
  EXPECT_EQ(provider_.GetStores().at(L"s").GetStoreURL(), L"https://old");
  EXPECT_FALSE(WasSaved());
  EXPECT_TRUE(publications_.All().empty());
}

TEST_F(OutboundUserConfirmTest, BesideANewStoreADeclinedOneIsAmongTheAccepted) {
  Hold({Store(L"declined", L"https://old")});
  Trust(L"declined");
  Trust(L"new");
  EXPECT_CALL(notifications_, ShowTrustDialog).Times(2).WillRepeatedly(Return(100));
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog).WillOnce(Return(0));
  StoreMap accepted;
  provider_.OutboundUserConfirm(File(ServiceRecord(Service(L"declined") + Service(L"new"))), accepted);
  EXPECT_EQ(Ids(accepted), (Wide{L"declined", L"new"}));
  EXPECT_EQ(accepted[L"declined"].GetStoreURL(), Address(L"declined")) << "as the file has it";
  EXPECT_EQ(provider_.GetStores().at(L"declined").GetStoreURL(), L"https://old");
}

TEST_F(OutboundUserConfirmTest, HeldStoresThatTheFileDoesNotNameAreNotAmongTheAccepted) {
  Hold({Store(L"other", L"https://other.example")});
  Trust(L"new");
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  EXPECT_EQ(Confirm(File(ServiceRecord(Service(L"new")))), (Wide{L"new"}));
}

TEST_F(OutboundUserConfirmTest, AnAcceptedStoreIsSavedBeforeItIsPublished) {
  Trust(L"s");
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  EXPECT_EQ(Confirm(File(ServiceRecord(Service(L"s")))), (Wide{L"s"}));
  EXPECT_TRUE(SavedAndThenPublishedOnce());
}

TEST_F(OutboundUserConfirmTest, TheLockIsLeftWhenTheAcceptedStoreCannotBePublished) {
  Trust(L"s");
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  publications_.FailNext();
  EXPECT_THROW(Confirm(File(ServiceRecord(Service(L"s")))), std::runtime_error);
  EXPECT_FALSE(InsideCriticalSection());
}

TEST_F(OutboundUserConfirmTest, TheFileIsParsedOutsideTheLock) {
  EXPECT_CALL(notifications_, ShowSRErrorDialog);
  EXPECT_EQ(Confirm(File(ServiceRecord(Service(L"s")))), Wide{});
  EXPECT_FALSE(trace_.AnyMarked(kDocParserFile));
}

TEST_F(OutboundUserConfirmTest, ValidationAndTrustDialogsAreOutsideTheLock) {
  Trust(L"s");
  bool inside = true;
  EXPECT_CALL(notifications_, ShowTrustDialog)
      .WillOnce(::testing::DoAll([&inside] { inside = InsideCriticalSection(); }, Return(100)));
  EXPECT_EQ(Confirm(File(ServiceRecord(Service(L"s")))), (Wide{L"s"}));
  EXPECT_FALSE(inside);
  EXPECT_FALSE(validations_.ValidatedInsideCriticalSection());
  EXPECT_FALSE(InsideCriticalSection());
}

TEST_F(OutboundUserConfirmTest, TheFileIsReadAsUtf8) {
  validations_.Answer(L"https://s", SSLOutcome::Trusted(L"O", L"I"));
  const auto path = folder_.Path() / "opened.cr";
  std::ofstream(path) << "\xEF\xBB\xBF<Services><Service type='store'><SRID>s</SRID><Name>Caf\xC3\xA9</Name>"
                         "<Address>https://s</Address></Service></Services>";
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  EXPECT_EQ(Confirm(L"'" + path.wstring() + L"'"), (Wide{L"s"}));
  EXPECT_EQ(provider_.GetStores().at(L"s").GetStoreName(), L"Caf\u00E9");
}

}  // namespace
