#include "core/ProviderTest.h"

namespace {

using namespace ServiceRecords;
using namespace TestSupport;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Return;
using Kind = ListChange::Kind;

class ListChangesTest : public ProviderTest {
 protected:
  // What was announced at one time, if that was once.
  [[nodiscard]] std::vector<std::pair<Kind, std::wstring>> Announced() const {
    EXPECT_LE(announced_.size(), 1U);
    std::vector<std::pair<Kind, std::wstring>> changes;
    for (const auto& together : announced_) {
      for (const ListChange& change : together) changes.emplace_back(change.kind, change.id);
    }
    return changes;
  }
  bool HandIn(const std::wstring& services) {
    bool updated = false;
    provider_.InboundUpdate(ServiceRecord(services), updated);
    return updated;
  }
  void HoldSaved(const std::vector<SRStore>& stores) {
    Hold(stores);
    provider_.SaveAllStores();
    Forget();
  }
};

TEST_F(ListChangesTest, ADocumentOfTheDiscoveryServiceAddsAndConfirmsAlsoWhatIsTheSame) {
  HandIn(Service(L"a"));
  EXPECT_THAT(Announced(), ElementsAre(std::pair(Kind::Added, L"a")));
  Forget();
  HandIn(Service(L"a") + Service(L"b"));
  EXPECT_THAT(Announced(), ElementsAre(std::pair(Kind::Confirmed, L"a"), std::pair(Kind::Added, L"b")));
  EXPECT_EQ(announced_[0][0].name, L"Name of a");
  EXPECT_EQ(announced_[0][0].url, L"https://a.example/store/discovery");
}

TEST_F(ListChangesTest, AReplacedStoreHasItsNewNameAndADeclinedOneIsNotAnnounced) {
  HoldSaved({Store(L"a", L"https://a"), Store(L"b", L"https://b")});
  EXPECT_CALL(notifications_, ShowStoreReplaceDialog).WillOnce(Return(100)).WillOnce(Return(0));
  SRStore newer = Store(L"a", L"https://new");
  newer.SetStoreName(L"New");
  StoreMap incoming = Map({newer, Store(L"b", L"https://new")});
  bool updated = false;
  provider_.MergeStores(incoming, false, updated);
  EXPECT_THAT(announced_, IsEmpty()) << "nothing is announced before it is saved";
  provider_.SaveAllStores();
  EXPECT_THAT(Announced(), ElementsAre(std::pair(Kind::Replaced, L"a")));
  EXPECT_EQ(announced_[0][0].name, L"New");
  EXPECT_EQ(announced_[0][0].url, L"https://new");
}

TEST_F(ListChangesTest, ARemovedStoreIsAnnouncedAsItWas) {
  HoldSaved({Store(L"a", L"https://a")});
  EXPECT_FALSE(provider_.RemoveStore(L"b"));
  EXPECT_THAT(announced_, IsEmpty());
  EXPECT_TRUE(provider_.RemoveStore(L"a"));
  EXPECT_THAT(Announced(), ElementsAre(std::pair(Kind::Deleted, L"a")));
  EXPECT_EQ(announced_[0][0].url, L"https://a");
}

TEST_F(ListChangesTest, AChosenGatewayIsAnnouncedWithItsName) {
  HoldSaved({Store(L"a", L"https://a", {Gateway(L"One"), Gateway(L"Two")})});
  EXPECT_FALSE(provider_.SetDefaultGatewayForStoreID(L"a", L"Three"));
  EXPECT_TRUE(provider_.SetDefaultGatewayForStoreID(L"a", L"Two"));
  provider_.SaveAllStores();
  EXPECT_THAT(Announced(), ElementsAre(std::pair(Kind::DefaultGateway, L"a")));
  EXPECT_EQ(announced_[0][0].defaultGateway, L"Two");
}

TEST_F(ListChangesTest, AChangeIsAnnouncedOnceAndASaveWithoutOneNotAtAll) {
  HandIn(Service(L"a"));
  Forget();
  provider_.SaveAllStores();
  EXPECT_THAT(announced_, IsEmpty());
}

TEST_F(ListChangesTest, TheAnnouncementFollowsOnThePublication) {
  ProviderParts parts = Parts();
  std::size_t publishedBefore = 0;
  parts.announce = [&](const auto& /*changes*/) { publishedBefore = publications_.All().size(); };
  SRProvider provider(parts);
  provider.InitNotificationManager(&notifications_);
  Forget();
  bool updated = false;
  provider.InboundUpdate(ServiceRecord(Service(L"a")), updated);
  EXPECT_EQ(publishedBefore, 1U);
}

}  // namespace
