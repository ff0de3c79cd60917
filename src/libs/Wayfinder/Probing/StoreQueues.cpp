#include "libs/Wayfinder/Probing/StoreQueues.h"

#include <algorithm>

namespace Wayfinding {

void StoreQueues::Add(std::size_t thing, const std::vector<std::size_t>& stores) {
  isTaken_.resize(std::max(isTaken_.size(), thing + 1));
  for (const std::size_t store : stores) queues_[store].push_back(thing);
}

void StoreQueues::OfferInTurns(const Take& take) {
  for (bool anyTaken = true; anyTaken;) {
    anyTaken = false;
    for (std::size_t store = 0; store < queues_.size(); ++store) {
      if (OfferFirst(store, take)) anyTaken = true;
    }
  }
}

bool StoreQueues::OfferFirst(std::size_t store, const Take& take) {
  std::deque<std::size_t>& queue = queues_[store];
  while (!queue.empty() && isTaken_[queue.front()]) queue.pop_front();
  if (queue.empty() || !take(queue.front(), store)) return false;
  isTaken_[queue.front()] = true;
  queue.pop_front();
  return true;
}

}  // namespace Wayfinding
