#include "libs/Wayfinder/Probing/StoreQueues.h"

#include <gmock/gmock.h>

#include <utility>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Wayfinding::StoreQueues;

namespace {

using Taken = std::vector<std::pair<std::size_t, std::size_t>>;  // things, and for which store

// As long as a store holds fewer than `most`.
Taken TakeAtMost(StoreQueues& queues, int most) {
  Taken taken;
  std::vector<int> held(10);
  queues.OfferInTurns([&](std::size_t thing, std::size_t store) {
    if (held[store] == most) return false;
    ++held[store];
    taken.emplace_back(thing, store);
    return true;
  });
  return taken;
}

TEST(StoreQueues, StoresTakeTurns) {
  StoreQueues queues(2);
  for (const std::size_t thing : {0U, 1U, 2U}) queues.Add(thing, {0});
  queues.Add(3, {1});
  EXPECT_THAT(TakeAtMost(queues, 9), ElementsAre(Pair(0, 0), Pair(3, 1), Pair(1, 0), Pair(2, 0)));
}

TEST(StoreQueues, AStoreThatMayTakeNoMoreKeepsNoOtherWaiting) {
  StoreQueues queues(2);
  for (const std::size_t thing : {0U, 1U, 2U}) queues.Add(thing, {0});
  for (const std::size_t thing : {3U, 4U, 5U}) queues.Add(thing, {1});
  EXPECT_THAT(TakeAtMost(queues, 2), ElementsAre(Pair(0, 0), Pair(3, 1), Pair(1, 0), Pair(4, 1)));
  EXPECT_THAT(TakeAtMost(queues, 2), ElementsAre(Pair(2, 0), Pair(5, 1))) << "what was refused stays";
}

TEST(StoreQueues, AThingOfSeveralStoresIsTakenOnceForWhicheverMay) {
  StoreQueues queues(2);
  queues.Add(0, {0});
  queues.Add(1, {0, 1});
  EXPECT_THAT(TakeAtMost(queues, 1), ElementsAre(Pair(0, 0), Pair(1, 1)));
  EXPECT_THAT(TakeAtMost(queues, 9), IsEmpty());
}

}  // namespace
