#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <vector>

namespace Wayfinding {

// Things to be done for stores: each store has a queue of its own, so that one store's many things keep no
// other waiting. One thread.
class StoreQueues {
 public:
  // Returns whether it took the thing on the store's behalf; false: not now.
  using Take = std::function<bool(std::size_t thing, std::size_t store)>;

  explicit StoreQueues(std::size_t stores) : queues_(stores) {}

  // Each thing once, for one or several stores.
  void Add(std::size_t thing, const std::vector<std::size_t>& stores);
  // Offers the first thing of each store in turn until none is taken any more. What one store took is gone
  // from the queues of the others.
  void OfferInTurns(const Take& take);

 private:
  bool OfferFirst(std::size_t store, const Take& take);

  std::vector<std::deque<std::size_t>> queues_;
  std::vector<bool> isTaken_;  // by thing
};

}  // namespace Wayfinding
