#include "bus/BusLoop.h"

#include "bus/UserBus.h"

#include <csignal>
#include <utility>

namespace Srctl {

std::optional<BusLoop> BusLoop::Make(std::initializer_list<int> signals, std::string& problem) {
  std::optional<Bus::Connection> bus = OpenUserBus(problem);
  if (!bus) return std::nullopt;
  Bus::Result<> result = Bus::Nothing{};
  if (Bus::Result<Bus::EventLoop> loop = Bus::EventLoop::Make()) {
    BusLoop made(std::move(*loop), std::move(*bus));
    result = made.Prepare(signals);
    if (result) return made;
  } else {
    result = loop.Failure();
  }
  problem = "it cannot be waited for: " + result.Failure().text;
  return std::nullopt;
}

Bus::Result<> BusLoop::Prepare(std::initializer_list<int> signals) {
  sigset_t blocked;
  ::sigemptyset(&blocked);
  for (const int signal : signals) ::sigaddset(&blocked, signal);
  ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
  Bus::Result<> result = bus_.Attach(loop_);
  for (const int signal : signals) {
    if (result) result = loop_.EndOnSignal(signal);
  }
  return result;
}

Bus::Result<> BusLoop::AddMatch(const std::string& rule, Bus::Connection::MessageHandler handler) {
  return Bus::Keep(slots_.emplace_back(), bus_.Match(rule, std::move(handler)));
}

Bus::Result<> BusLoop::AddCall(Bus::Result<Bus::Slot> call) {
  return Bus::Keep(slots_.emplace_back(), std::move(call));
}

}  // namespace Srctl
