#include "SRLib/Platform/Messages.h"
#include "SRLib/Platform/SSLValidationDetails.h"
#include "SRLib/Provider/DialogSubject.h"
#include "SRLib/Provider/Opening.h"
#include "SRLib/Provider/StoreBounds.h"
#include "core/ProviderTest.h"
#include "libs/Files/EventFd.h"
#include "libs/Wayfinder/Wayfinder.h"
#include "support/TemporaryFolder.h"

#include <fstream>
#include <stdexcept>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;
using Openings::Outcome;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::Return;
using ::testing::Throw;

class OpeningTest : public ProviderTest {
 protected:
  OpeningTest() { location_.AnswerWith(Wayfinder::kNone); }

  static std::wstring Address(const std::wstring& id) {
    return L"https://" + id + L".example/store/discovery";
  }
  void Trust(const std::wstring& id) { validations_.Answer(Address(id), SSLOutcome::Trusted(L"O", L"I")); }

  // Handles a file with these services as the agent does, but for the announcement.
  void Open(const std::wstring& services) {
    const auto path = folder_.Path() / "opened.cr";
    std::ofstream(path) << Narrow(ServiceRecord(services));
    OpenPath(path.wstring());
  }
  void OpenPath(const std::wstring& path) {
    opening_.emplace(
        Opening::Origin{.id = 7, .path = Narrow(path), .withdrawalDescriptor = withdrawal_.Descriptor()});
    const Opening::Handling handling(*opening_);
    StoreMap accepted;
    provider_.OutboundUserConfirm(L"\"" + path + L"\"", accepted);
    bool updated = false;
    if (!accepted.empty()) provider_.OutboundDSConfirm(accepted, updated);
  }

  void FillList() {
    StoreMap full;
    for (std::size_t i = 0; i < kMaximumStores; ++i) {
      const std::wstring id = L"h" + std::to_wstring(i);
      full.emplace(id, Store(id, L"https://h"));
    }
    bool updated = false;
    provider_.MergeStores(full, true, updated);
  }

  [[nodiscard]] std::vector<std::pair<std::string, Outcome>> Outcomes() const {
    std::vector<std::pair<std::string, Outcome>> outcomes;
    for (const auto& store : opening_->Stores()) outcomes.emplace_back(Narrow(store.id), store.outcome);
    return outcomes;
  }
  [[nodiscard]] std::wstring Reason() const { return opening_->Stores().front().reason; }
  static std::wstring MessageOf(int id) { return L"message " + std::to_wstring(id); }

  const TemporaryFolder folder_;
  Files::EventFd withdrawal_;
  std::optional<Opening> opening_;
};

TEST_F(OpeningTest, AnAcceptedStoreIsAdded) {
  Trust(L"s");
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  EXPECT_CALL(notifications_, ShowSRErrorDialog);  // it is not confirmed
  Open(Service(L"s"));
  EXPECT_THAT(Outcomes(), ElementsAre(Pair("s", Outcome::Added)));
  EXPECT_EQ(opening_->GravestOutcome(), Outcome::Added);
  EXPECT_EQ(opening_->Stores().front().url, Address(L"s"));
  EXPECT_EQ(Reason(), L"");
}

TEST_F(OpeningTest, AHeldStoreIsReplacedOrDeclinedAlsoWhenTheRecordIsTheSame) {
  for (const auto& [answer, outcome] : {std::pair(100, Outcome::Replaced), {0, Outcome::Declined}}) {
    Hold({Store(L"s", Address(L"s"))});
    Trust(L"s");
    EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
    EXPECT_CALL(notifications_, ShowStoreReplaceDialog).WillRepeatedly(Return(answer));
    if (answer == 100) EXPECT_CALL(notifications_, ShowSRErrorDialog);
    Open(Service(L"s"));
    EXPECT_THAT(Outcomes(), ElementsAre(Pair("s", outcome)));
  }
}

TEST_F(OpeningTest, OfSeveralStoresEachHasItsOutcomeAndTheGravestIsTheWholes) {
  Hold({Store(L"held", Address(L"held"))});
  for (const wchar_t* id : {L"declined", L"held", L"new"}) Trust(id);
  validations_.Answer(Address(L"bad"), SSLOutcome::Failed(SSLValidationDetails::kCertificatesNotFetched, {}));
  EXPECT_CALL(notifications_, ShowTrustDialog)
      .WillOnce(Return(0))
      .WillOnce(Return(100))
      .WillOnce(Return(100));
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog).WillOnce(Return(100));
  EXPECT_CALL(notifications_, ShowSRErrorDialog).Times(3);  // one for the server, two are not confirmed
  Open(Service(L"bad") + Service(L"declined") + Service(L"held") + Service(L"new"));
  EXPECT_THAT(Outcomes(),
              ElementsAre(Pair("bad", Outcome::ServerNotVerified), Pair("declined", Outcome::Declined),
                          Pair("held", Outcome::Replaced), Pair("new", Outcome::Added)));
  EXPECT_EQ(opening_->GravestOutcome(), Outcome::ServerNotVerified);
  EXPECT_EQ(Reason(), MessageOf(util::kReasonNotSecured));
}

TEST_F(OpeningTest, AServerThatIsNotReachedIsNotVerified) {
  EXPECT_CALL(notifications_, ShowSRErrorDialog);
  Open(Service(L"s"));
  EXPECT_THAT(Outcomes(), ElementsAre(Pair("s", Outcome::ServerNotVerified)));
  EXPECT_EQ(Reason(), MessageOf(util::kReasonNotReached));
}

TEST_F(OpeningTest, AFileWithoutStoresOrNoFileIsNoServiceRecord) {
  EXPECT_CALL(notifications_, ShowSRErrorDialog);
  Open(L"");
  EXPECT_EQ(opening_->GravestOutcome(), Outcome::NotAServiceRecord);
  EXPECT_FALSE(opening_->IsUnread());
  OpenPath((folder_.Path() / "missing.cr").wstring());
  EXPECT_EQ(opening_->GravestOutcome(), Outcome::NotAServiceRecord);
  EXPECT_TRUE(opening_->IsUnread());
  EXPECT_EQ(opening_->ReasonWithoutStores(), L"not read");
  EXPECT_THAT(Outcomes(), IsEmpty());
}

TEST_F(OpeningTest, WhatIsNotHandledHasEnded) {
  EXPECT_EQ(Opening({}).GravestOutcome(), Outcome::Ended);
}

TEST_F(OpeningTest, WhatIsBrokenOffIsNotSavedButForWhatWasDecided) {
  Trust(L"s");
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  EXPECT_CALL(notifications_, ShowSRErrorDialog);
  Open(Service(L"s"));
  opening_->BreakOff(L"failure");
  EXPECT_THAT(Outcomes(), ElementsAre(Pair("s", Outcome::Added)));
  Opening unread({});
  unread.BreakOff(L"failure");
  EXPECT_EQ(unread.GravestOutcome(), Outcome::NotSaved);
  EXPECT_EQ(unread.ReasonWithoutStores(), L"failure");
}

TEST_F(OpeningTest, WhatIsAcceptedIsNotSavedWhenTheMergeFails) {
  Hold({Store(L"b", Address(L"b"))});
  for (const wchar_t* id : {L"a", L"b"}) Trust(id);
  EXPECT_CALL(notifications_, ShowTrustDialog).WillRepeatedly(Return(100));
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog).WillOnce(Throw(std::runtime_error("of the test")));
  EXPECT_THROW(Open(Service(L"a") + Service(L"b")), std::runtime_error);
  opening_->BreakOff(L"failure");
  EXPECT_THAT(Outcomes(), ElementsAre(Pair("a", Outcome::NotSaved), Pair("b", Outcome::NotSaved)));
  EXPECT_EQ(Reason(), MessageOf(util::kReasonBrokenOff));
}

TEST_F(OpeningTest, AStoreThatCannotBeSavedIsNotSavedUntilALaterSaveOfTheSameFlow) {
  for (const bool isConfirmed : {false, true}) {
    Trust(L"s");
    configuration_.FailWrites(true);
    EXPECT_CALL(notifications_, ShowStoreReplaceDialog).WillRepeatedly(Return(100));
    EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
    if (isConfirmed) {
      location_.AnswerWith(Wayfinder::kLAN);
      server_.Answer(Address(L"s"),
                     {.status = 200,
                      .body = DiscoveryDocument(Service(L"s", L"", InServiceRecordNamespace())),
                      .rawHeader = L"",
                      .meanwhile = [this] { configuration_.FailWrites(false); }});
    } else {
      EXPECT_CALL(notifications_, ShowSRErrorDialog);
    }
    Open(Service(L"s"));
    const Outcome saved = isConfirmed ? Outcome::Replaced : Outcome::NotSaved;
    EXPECT_THAT(Outcomes(), ElementsAre(Pair("s", saved)));
    EXPECT_EQ(Reason(), isConfirmed ? L"" : MessageOf(util::kReasonListNotWritten));
  }
}

TEST_F(OpeningTest, NothingIsSavedWhileTheListCannotBeRead) {
  configuration_.FailReads(true);
  SRProvider provider(Parts());
  provider.InitNotificationManager(&notifications_);
  const auto path = folder_.Path() / "opened.cr";
  std::ofstream(path) << Narrow(ServiceRecord(Service(L"s")));
  opening_.emplace(Opening::Origin{});
  const Opening::Handling handling(*opening_);
  EXPECT_CALL(notifications_, ShowSRErrorDialog);
  StoreMap accepted;
  provider.OutboundUserConfirm(L"\"" + path.wstring() + L"\"", accepted);
  EXPECT_THAT(Outcomes(), ElementsAre(Pair("s", Outcome::NotSaved)));
  EXPECT_EQ(Reason(), MessageOf(util::kReasonListNotRead));
}

TEST_F(OpeningTest, AStoreForWhichTheListHasNoRoomIsNotSaved) {
  FillList();
  EXPECT_CALL(notifications_, ShowSRErrorDialog);
  Open(Service(L"s"));
  EXPECT_THAT(Outcomes(), ElementsAre(Pair("s", Outcome::NotSaved)));
  EXPECT_EQ(Reason(), MessageOf(util::kReasonListFull));
}

TEST_F(OpeningTest, AStoreForWhichTheListHasNoRoomAnyMoreOnceTheUserHasAcceptedIsNotSaved) {
  Trust(L"s");
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce([this](auto&&...) {
    FillList();
    return 100;
  });
  EXPECT_CALL(notifications_, ShowSRErrorDialog);
  Open(Service(L"s"));
  EXPECT_THAT(Outcomes(), ElementsAre(Pair("s", Outcome::NotSaved)));
}

TEST_F(OpeningTest, AConfirmationForWhichTheListHasNoRoomIsNotWhyTheStoreIsNotSaved) {
  Trust(L"s");
  location_.AnswerWith(Wayfinder::kLAN);
  std::wstring gateways;
  for (std::size_t i = 0; i <= kMaximumGateways; ++i) gateways += GatewayElement(L"g" + std::to_wstring(i));
  server_.Answer(Address(L"s"), DiscoveryDocument(Service(L"s", L"<Gateways>" + gateways + L"</Gateways>",
                                                          InServiceRecordNamespace())));
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  configuration_.FailWrites(true);
  Open(Service(L"s"));
  EXPECT_THAT(Outcomes(), ElementsAre(Pair("s", Outcome::NotSaved)));
  EXPECT_EQ(Reason(), MessageOf(util::kReasonListNotWritten)) << "of what the user accepted, there was room";
}

TEST_F(OpeningTest, AHindranceIsTheNextRefusalsReasonAndNoLaterOnes) {
  for (const wchar_t* id : {L"a", L"b"}) Trust(id);
  EXPECT_CALL(notifications_, ShowTrustDialog)
      .WillOnce([](auto&&...) {
        Opening::NoteHindrance(Outcome::CouldNotAsk);
        return 0;
      })
      .WillOnce(Return(0));
  Open(Service(L"a") + Service(L"b"));
  EXPECT_THAT(Outcomes(), ElementsAre(Pair("a", Outcome::CouldNotAsk), Pair("b", Outcome::Declined)));
  EXPECT_EQ(opening_->GravestOutcome(), Outcome::CouldNotAsk);
}

TEST_F(OpeningTest, OnceItIsWithdrawnNoServerIsAskedAndTheRestCountsAsDeclined) {
  for (const wchar_t* id : {L"a", L"b", L"c"}) Trust(id);
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce([this](auto&&...) {
    withdrawal_.Raise();
    return 0;
  });
  Open(Service(L"a") + Service(L"b") + Service(L"c"));
  EXPECT_THAT(Outcomes(), ElementsAre(Pair("a", Outcome::Declined), Pair("b", Outcome::Declined),
                                      Pair("c", Outcome::Declined)));
  EXPECT_EQ(validations_.Validated(), (Wide{Address(L"a")}));
}

TEST_F(OpeningTest, OnceItIsWithdrawnNobodyWaitsForTheNetworksLocation) {
  Trust(L"s");
  location_.AnswerWith(Wayfinder::kDeciding);
  clock_.OnSecond([this](int second) {
    if (second == 3) withdrawal_.Raise();
    return true;
  });
  EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce(Return(100));
  EXPECT_CALL(notifications_, ShowSRErrorDialog);
  Open(Service(L"s"));
  EXPECT_EQ(clock_.Seconds(), 3);
  EXPECT_THAT(Outcomes(), ElementsAre(Pair("s", Outcome::Added)));
}

TEST_F(OpeningTest, BelongsToItsThreadAlone) {
  opening_.emplace(Opening::Origin{});
  EXPECT_EQ(Opening::OfThisThread(), nullptr);
  {
    const Opening::Handling handling(*opening_);
    EXPECT_EQ(Opening::OfThisThread(), &*opening_);
    std::jthread([] { EXPECT_EQ(Opening::OfThisThread(), nullptr); }).join();
  }
  EXPECT_EQ(Opening::OfThisThread(), nullptr);
}

class DialogSubjectTest : public OpeningTest {
 protected:
  void ExpectError(const std::wstring& reason) {
    EXPECT_CALL(notifications_, ShowSRErrorDialog).WillOnce([this, reason](auto&&...) {
      const auto* const problem = DialogSubject::OfThisThread<ServerProblem>();
      EXPECT_NE(problem, nullptr);
      if (problem != nullptr) {
        EXPECT_EQ(problem->storeName, store_.GetStoreName());
        EXPECT_EQ(problem->reason, reason);
      }
      return -1;
    });
  }
  void FailToConfirmListedStore() {
    Hold({store_});
    provider_.SaveAllStores();
    std::wstring document;
    bool canceled = false;
    EXPECT_FALSE(provider_.VerifyDSTrust(store_, document, canceled));
  }

  SRStore store_ = Store(L"s", L"https://s");
};

TEST_F(DialogSubjectTest, TheTrustDialogIsAboutTheServerThatWasVerified) {
  SRStore store = Store(L"s", L"https://s", {Gateway(L"GW", L"https://gw")});
  for (const bool reachesGateway : {true, false}) {
    if (!reachesGateway)
      validations_.Answer(L"https://gw", SSLOutcome::Failed(SSLValidationDetails::kServerNotContacted, {}));
    if (reachesGateway) validations_.Answer(L"https://gw", SSLOutcome::Trusted(L"O", L"I"));
    validations_.Answer(L"https://s", SSLOutcome::Trusted(L"O", L"I"));
    EXPECT_CALL(notifications_, ShowTrustDialog).WillOnce([&](auto&&...) {
      const auto* const verified = DialogSubject::OfThisThread<VerifiedServer>();
      EXPECT_NE(verified, nullptr);
      if (verified != nullptr) {
        EXPECT_EQ(verified->isGateway, reachesGateway);
        EXPECT_EQ(verified->url, reachesGateway ? L"https://gw" : L"https://s");
      }
      return 100;
    });
    EXPECT_TRUE(provider_.VerifyUserTrust(store));
  }
  EXPECT_EQ(DialogSubject::OfThisThread<VerifiedServer>(), nullptr);
}

TEST_F(DialogSubjectTest, TheReplaceDialogIsAboutBothRecords) {
  Hold({Store(L"s", L"https://old")});
  StoreMap incoming = Map({Store(L"s", L"https://new")});
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog).WillOnce([](auto&&...) {
    const auto* const replacement = DialogSubject::OfThisThread<Replacement>();
    EXPECT_NE(replacement, nullptr);
    if (replacement != nullptr) {
      EXPECT_EQ(replacement->held.GetStoreURL(), L"https://old");
      EXPECT_EQ(replacement->incoming.GetStoreURL(), L"https://new");
    }
    return 0;
  });
  bool updated = false;
  provider_.MergeStores(incoming, false, updated);
}

TEST_F(DialogSubjectTest, TheErrorIsAboutTheServerThatWasAskedLast) {
  SRStore store = Store(L"s", L"https://s", {Gateway(L"GW", L"https://gw")});
  SSLOutcome refused = SSLOutcome::Failed(SSLValidationDetails::kCertificatesNotFetched, {L"refused"});
  refused.reason = L"It has expired.";
  validations_.Answer(L"https://s", refused);
  EXPECT_CALL(notifications_, ShowSRErrorDialog).WillOnce([&store](auto&&...) {
    const auto* const problem = DialogSubject::OfThisThread<ServerProblem>();
    EXPECT_NE(problem, nullptr);
    if (problem != nullptr) {
      EXPECT_EQ(problem->url, L"https://s");
      EXPECT_EQ(problem->storeName, store.GetStoreName());
      EXPECT_EQ(problem->reason, L"It has expired.");
    }
    return -1;
  });
  EXPECT_FALSE(provider_.VerifyUserTrust(store));
}

TEST_F(DialogSubjectTest, AnErrorOfAConfirmationSaysThatItsStoreIsInTheListAllTheSame) {
  ExpectError(MessageOf(util::kReasonInList));
  FailToConfirmListedStore();
}

TEST_F(DialogSubjectTest, AnErrorOfAConfirmationDoesNotSaySoOfAStoreThatIsRemovedMeanwhile) {
  location_.AnswerWith(Wayfinder::kDeciding);
  clock_.OnSecond([this](int second) {
    if (second == 3) static_cast<void>(provider_.RemoveStore(L"s"));
    if (second == 4) location_.AnswerWith(Wayfinder::kNone);
    return true;
  });
  ExpectError(L"");
  FailToConfirmListedStore();
  EXPECT_EQ(clock_.Seconds(), 4);
}

}  // namespace
