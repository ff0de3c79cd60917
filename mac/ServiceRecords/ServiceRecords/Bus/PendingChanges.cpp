#include "Bus/PendingChanges.h"

#include <utility>

namespace Agent {

std::uint64_t PendingChanges::Begin(const std::string& caller, Reply reply) {
  const std::uint64_t number = next_++;
  latest_[caller] = number;
  changes_.emplace(number, Change{caller, std::move(reply), {}});
  return number;
}

void PendingChanges::End(std::uint64_t number, const Outcome& outcome) {
  const auto ended = changes_.extract(number);
  if (!ended) return;
  const Change& change = ended.mapped();
  const auto latest = latest_.find(change.caller);
  if (latest != latest_.end() && latest->second == number) latest_.erase(latest);
  change.reply(outcome.changed);
  for (const Answer& answer : change.behind) answer(outcome.stores);
}

bool PendingChanges::KeepBehind(const std::string& caller, const Answer& answer) {
  const auto latest = latest_.find(caller);
  if (latest == latest_.end()) return false;
  changes_.at(latest->second).behind.push_back(answer);
  return true;
}

}  // namespace Agent
