#include "Model/StoreList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace Stores {
namespace {

Store Named(const std::string& id, const std::string& name) {
  return {id, name, "https://" + id + ".example", {}};
}

// A list, and what its model told of its changes: where, how many went, how many came.
class TheStoreList : public testing::Test {
 protected:
  using Change = std::tuple<guint, guint, guint>;

  TheStoreList() {
    const auto note = [](GListModel*, guint position, guint removed, guint added, gpointer changes) {
      static_cast<std::vector<Change>*>(changes)->emplace_back(position, removed, added);
    };
    g_signal_connect(list_.Model(), "items-changed", G_CALLBACK(+note), &changes_);
  }

  [[nodiscard]] std::vector<std::string> IDs() const {
    std::vector<std::string> ids;
    for (guint position = 0; position < list_.Count(); ++position)
      ids.push_back(StoreOf(list_.At(position)).id);
    return ids;
  }

  StoreList list_;
  std::vector<Change> changes_;
};

TEST_F(TheStoreList, IsOrderedByNameWithoutRegardToCase) {
  list_.Take({Named("s1", "beta"), Named("s2", "Gamma"), Named("s3", "Alpha")});
  EXPECT_THAT(IDs(), ElementsAre("s3", "s1", "s2"));
}

TEST_F(TheStoreList, KeepsTheOrderOfStoresWithTheSameName) {
  list_.Take({Named("s1", "Same"), Named("s2", "Same"), Named("s3", "Same")});
  EXPECT_THAT(IDs(), ElementsAre("s1", "s2", "s3"));
}

TEST_F(TheStoreList, TellsOneChangeNoLongerThanItIs) {
  list_.Take({Named("a", "A"), Named("b", "B"), Named("d", "D"), Named("e", "E")});
  list_.Take({Named("a", "A"), Named("b", "B"), Named("c", "C"), Named("d", "D"), Named("e", "E")});
  list_.Take({Named("a", "A"), Named("c", "C"), Named("d", "D"), Named("e", "E")});
  EXPECT_THAT(changes_, ElementsAre(Change{0, 0, 4}, Change{2, 0, 1}, Change{1, 1, 0}));
  EXPECT_THAT(IDs(), ElementsAre("a", "c", "d", "e"));
}

TEST_F(TheStoreList, TellsNothingWhenNothingHasChanged) {
  list_.Take({Named("a", "A"), Named("b", "B")});
  changes_.clear();
  list_.Take({Named("a", "A"), Named("b", "B")});
  EXPECT_THAT(changes_, IsEmpty());
}

TEST_F(TheStoreList, AStoreThatStaysKeepsItsItem) {
  list_.Take({Named("a", "A"), Named("b", "B")});
  StoreItem* const item = list_.Find("b");
  int changes = 0;
  g_signal_connect_swapped(item, "changed", G_CALLBACK(+[](int* count) { ++*count; }), &changes);
  list_.Take({Named("b", "0 first now"), Named("a", "A")});
  EXPECT_EQ(list_.At(0), item);
  EXPECT_EQ(StoreOf(item).name, "0 first now");
  EXPECT_EQ(changes, 1);
}

TEST_F(TheStoreList, CanBecomeEmpty) {
  list_.Take({Named("a", "A"), Named("b", "B")});
  list_.Take({});
  EXPECT_THAT(IDs(), IsEmpty());
  EXPECT_EQ(list_.Find("a"), nullptr);
}

TEST_F(TheStoreList, FindsStoresByTheirAddress) {
  Store second = Named("b", "B");
  second.url = "https://a.example";
  list_.Take({Named("a", "A"), second, Named("c", "C")});
  EXPECT_THAT(list_.FindByURL("https://a.example"), ElementsAre(list_.Find("a"), list_.Find("b")));
  EXPECT_THAT(list_.FindByURL("https://x.example"), IsEmpty());
}

}  // namespace
}  // namespace Stores
