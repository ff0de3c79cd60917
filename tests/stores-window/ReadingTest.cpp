#include "Agent/Reading.h"
#include "Shared/Owners.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using Wording::Worded;

namespace Stores {

using namespace Windows;

namespace {

VariantPtr Parsed(const char* text) {
  return VariantPtr(g_variant_ref_sink(g_variant_new_parsed(text)));
}

TEST(Reading, TakesEveryStoreWithItsGateways) {
  const VariantPtr stores = Parsed(
      "[{'StoreID': <'s1'>, 'StoreName': <'One'>, 'StoreURL': <'https://one.example/d'>, 'StoreType': "
      "<uint64 0>,"
      "  'StoreGateways': <[{'GatewayName': <'A'>, 'GatewayURL': <'https://a.example'>, 'IsDefault': <true>},"
      "                     {'GatewayName': <'B'>, 'GatewayURL': <'https://b.example'>, 'IsDefault': "
      "<false>}]>},"
      " {'StoreID': <'s2'>, 'StoreName': <'Two'>, 'StoreURL': <'https://two.example'>}]");
  EXPECT_THAT(Reading::Stores(stores.get()),
              ElementsAre(Store{"s1",
                                "One",
                                "https://one.example/d",
                                {{"A", "https://a.example", true}, {"B", "https://b.example", false}}},
                          Store{"s2", "Two", "https://two.example", {}}));
}

TEST(Reading, TakesAMessageWithAllThatIsFilledIn) {
  const VariantPtr message = Parsed(
      "{'Pattern': <'{a} ({b})'>, 'Places': <[{'Name': <'a'>, 'Text': <'x'>},"
      "  {'Name': <'b'>, 'Pattern': <'{c}'>, 'Places': <[{'Name': <'c'>, 'Text': <'y'>}]>}]>}");
  EXPECT_EQ(Reading::MessageFrom(message.get()),
            Worded("{a} ({b})", {{"a", "x"}, {"b", Worded("{c}", {{"c", "y"}})}}));
  EXPECT_EQ(Reading::MessageFrom(Parsed("{'Text': <'{c}'>}").get()), Wording::Message("{c}"));
  EXPECT_EQ(Reading::MessageFrom(Parsed("{'Pattern': <uint32 1>, 'Places': <'a'>}").get()),
            Wording::Message());
}

TEST(Reading, TakesWhatIsOfAnotherTypeForMissing) {
  const VariantPtr stores =
      Parsed("[{'StoreID': <uint32 1>, 'StoreName': <'One'>, 'StoreGateways': <'none'>}]");
  EXPECT_THAT(Reading::Stores(stores.get()), ElementsAre(Store{"", "One", "", {}}));
}

TEST(Reading, TakesWhatBecameOfAFileWithoutStores) {
  const VariantPtr parameters = Parsed("(uint64 7, 'not-a-service-record', [{'Reason': <'So it is.'>}])");
  const Finished finished = Reading::FinishedOpening(parameters.get());
  EXPECT_THAT(finished.stores, IsEmpty());
  EXPECT_EQ(finished.reason, "So it is.");
}

TEST(Reading, TakesWhatBecameOfEachStore) {
  const VariantPtr parameters = Parsed(
      "(uint64 7, 'declined', [{'StoreID': <'s1'>, 'StoreName': <'One'>, 'Outcome': <'added'>},"
      "                        {'StoreName': <'Two'>, 'Outcome': <'declined'>, 'Reason': <'So it is.'>}])");
  const Finished finished = Reading::FinishedOpening(parameters.get());
  EXPECT_EQ(finished.opening, 7U);
  EXPECT_EQ(finished.outcome, "declined");
  ASSERT_EQ(finished.stores.size(), 2U);
  EXPECT_EQ(finished.stores[0].id, "s1");
  EXPECT_EQ(finished.stores[0].outcome, "added");
  EXPECT_THAT(finished.stores[0].reason, IsEmpty());
  EXPECT_EQ(finished.stores[1].name, "Two");
  EXPECT_EQ(finished.stores[1].reason, "So it is.");
}

TEST(Reading, KnowsTheStatesOfTheList) {
  EXPECT_EQ(Reading::StateOf("good"), SavedState::Good);
  EXPECT_EQ(Reading::StateOf("unsaved"), SavedState::Unsaved);
  EXPECT_EQ(Reading::StateOf("unreadable"), SavedState::Unreadable);
}

}  // namespace
}  // namespace Stores
