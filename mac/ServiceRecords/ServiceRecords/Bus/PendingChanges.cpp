#include "Bus/PendingChanges.h"

#include "Bus/BusObject.h"

#include <utility>

namespace {

std::string SenderOf(sd_bus_message* call) {
  const char* sender = sd_bus_message_get_sender(call);
  return sender == nullptr ? "" : sender;
}

// As the bus library does it for a call that is answered at once.
void AnswerLate(sd_bus_message* call, const PendingChanges::Answer& answer,
                const PendingChanges::Stores& stores) {
  sd_bus_error error = SD_BUS_ERROR_NULL;
  const int result = AnswerCall(&error, [&] { return answer(call, stores); });
  if (result < 0) sd_bus_reply_method_errno(call, result, &error);
  sd_bus_error_free(&error);
}

}  // namespace

// The reply is made now, because the call may be large.
std::uint64_t PendingChanges::Begin(sd_bus_message* call, const char* resultTypes) {
  Change change{SenderOf(call), NewReply(call), resultTypes, {}};
  const std::uint64_t number = next_++;
  latest_[change.sender] = number;
  changes_.emplace(number, std::move(change));
  return number;
}

void PendingChanges::End(std::uint64_t number, const Outcome& outcome) {
  const auto ended = changes_.extract(number);
  if (!ended) return;
  const Change& change = ended.mapped();
  const auto latest = latest_.find(change.sender);
  if (latest != latest_.end() && latest->second == number) latest_.erase(latest);
  if (sd_bus_message_append(change.reply.get(), change.resultTypes, static_cast<int>(outcome.changed)) >= 0) {
    sd_bus_send(nullptr, change.reply.get(), nullptr);
  }
  for (const Kept& kept : change.behind) AnswerLate(kept.call.get(), kept.answer, outcome.stores);
}

bool PendingChanges::KeepBehind(sd_bus_message* call, const Answer& answer) {
  const auto latest = latest_.find(SenderOf(call));
  if (latest == latest_.end()) return false;
  changes_.at(latest->second).behind.push_back({BusMessagePtr(sd_bus_message_ref(call)), answer});
  return true;
}
