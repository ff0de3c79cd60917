#include "Model/StoreLocations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace Stores {
namespace {

const Location kLAN{1, "LAN"};
const Location kOutside{2, "outside"};

class TheLocations : public testing::Test {
 protected:
  TheLocations() { stores_.Take({{"a", "A", "https://a.example", {}}, {"b", "B", "https://b.example", {}}}); }

  [[nodiscard]] StoreItem* A() const { return stores_.Find("a"); }

  StoreList stores_;
  std::vector<std::string> asked_;
  std::vector<StoreLocations::Tell> answers_;
  const StoreLocations locations_{stores_, [this](const std::string& url, const StoreLocations::Tell& tell) {
                                    asked_.push_back(url);
                                    answers_.push_back(tell);
                                  }};
};

TEST_F(TheLocations, AreAskedForOnceForEachStoreThatIsLookedAt) {
  EXPECT_THAT(asked_, IsEmpty());
  locations_.Want(A());
  locations_.Want(A());
  EXPECT_THAT(asked_, ElementsAre("https://a.example"));
  EXPECT_EQ(LocationOf(A()), std::nullopt);
  answers_[0](kLAN);
  EXPECT_EQ(LocationOf(A()), kLAN);
}

TEST_F(TheLocations, ThatHaveChangedAreAskedForAgainWhereTheyWereWanted) {
  locations_.Renew("https://a.example");
  EXPECT_THAT(asked_, IsEmpty());
  locations_.Want(A());
  locations_.Renew("https://a.example");
  locations_.Renew("https://b.example");
  EXPECT_THAT(asked_, ElementsAre("https://a.example", "https://a.example"));
}

TEST_F(TheLocations, OnlyTheAnswerToTheLastQuestionCounts) {
  locations_.Want(A());
  locations_.Renew("https://a.example");
  answers_[1](kOutside);
  answers_[0](kLAN);
  EXPECT_EQ(LocationOf(A()), kOutside);
}

TEST_F(TheLocations, AreAskedForAnewOfAnotherAgent) {
  locations_.Want(A());
  locations_.RenewAll();
  EXPECT_THAT(asked_, ElementsAre("https://a.example", "https://a.example"));
}

TEST_F(TheLocations, OfAnAddressThatTheStoreHasNoMoreAreForgotten) {
  locations_.Want(A());
  answers_[0](kLAN);
  locations_.Renew("https://a.example");
  stores_.Take({{"a", "A", "https://new.example", {}}});
  EXPECT_EQ(LocationOf(A()), std::nullopt);
  answers_[1](kOutside);
  EXPECT_EQ(LocationOf(A()), std::nullopt);
  locations_.Want(A());
  EXPECT_THAT(asked_, ElementsAre("https://a.example", "https://a.example", "https://new.example"));
}

TEST_F(TheLocations, OfAStoreThatIsGoneMayStillBeTold) {
  locations_.Want(A());
  stores_.Take({});
  answers_[0](kLAN);
  EXPECT_EQ(stores_.Count(), 0U);
}

}  // namespace
}  // namespace Stores
