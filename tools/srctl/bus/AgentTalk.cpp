#include "bus/AgentTalk.h"

#include "bus/UserBus.h"
#include "libs/Bus/ServiceNames.h"

#include <csignal>
#include <utility>

namespace Srctl {

bool AgentTalk::Run(std::initializer_list<int> signals, const std::string& notBegun,
                    const std::function<Bus::Result<>()>& begin) {
  if (!Connect(signals)) return false;
  if (const Bus::Result<> begun = begin(); !begun) {
    problem_ = notBegun + ": " + begun.Failure().text;
    return false;
  }
  if (const Bus::Result<> run = loop_->Run(); !run) {
    problem_ = "the connection to it broke: " + run.Failure().text;
    return false;
  }
  return !hasFailed_;
}

bool AgentTalk::Connect(std::initializer_list<int> signals) {
  bus_ = OpenUserBus(problem_);
  if (!bus_) return false;
  const Bus::Result<> made = MakeLoop(signals);
  if (!made) problem_ = "it cannot be waited for: " + made.Failure().text;
  return static_cast<bool>(made);
}

Bus::Result<> AgentTalk::MakeLoop(std::initializer_list<int> signals) {
  Bus::Result<Bus::EventLoop> loop = Bus::EventLoop::Make();
  if (!loop) return loop.Failure();
  loop_ = std::move(*loop);
  sigset_t blocked;
  ::sigemptyset(&blocked);
  for (const int signal : signals) ::sigaddset(&blocked, signal);
  ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
  Bus::Result<> result = bus_->Attach(*loop_);
  for (const int signal : signals) {
    if (result) result = loop_->EndOnSignal(signal);
  }
  return result;
}

Bus::Result<> AgentTalk::AddMatch(const std::string& rule, Bus::Connection::MessageHandler handler) {
  return Bus::Keep(slots_.emplace_back(), bus_->Match(rule, std::move(handler)));
}

Bus::Result<> AgentTalk::AddCall(Bus::Result<Bus::Slot> call) {
  return Bus::Keep(slots_.emplace_back(), std::move(call));
}

Bus::Result<> AgentTalk::AddOwnerAndLoss(Bus::Connection::MessageHandler handleOwner) {
  Bus::Result<> result =
      AddMatch(Bus::MatchOwnerOf(Bus::ServiceNames::kServiceRecords), std::move(handleOwner));
  if (!result) return result;
  return AddMatch(Bus::MatchLoss(),
                  [this](const Bus::Message& /*signal*/) { Fail("the session bus is gone"); });
}

void AgentTalk::Finish() {
  loop_->End();
}

void AgentTalk::Fail(const std::string& problem) {
  problem_ = problem;
  hasFailed_ = true;
  Finish();
}

}  // namespace Srctl
