#include "Process/SessionDesktop.h"

#include "libs/Bus/Connection.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace Agent {
namespace {

using std::chrono::steady_clock;

constexpr Bus::Service kServiceManager{"org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                                       "org.freedesktop.systemd1.Manager"};
constexpr std::chrono::seconds kPatience{2};

// For a call that has none left, too: no time at all would stand for the bus's own.
std::chrono::microseconds TimeUntil(steady_clock::time_point deadline) {
  return std::max(std::chrono::ceil<std::chrono::microseconds>(deadline - steady_clock::now()),
                  std::chrono::microseconds(1));
}

}  // namespace

Display::Variables SessionDesktop() {
  const auto deadline = steady_clock::now() + kPatience;
  Bus::Result<Bus::Connection> bus = Bus::Connection::ToUserBus(Bus::Connection::Unsent::Dropped);
  if (!bus || !bus->AwaitReady(deadline)) return {};
  const auto environment = bus->Property<std::vector<std::string>>(
      kServiceManager, {.timeOut = TimeUntil(deadline), .startsService = false}, "Environment");
  return environment ? Display::Among(*environment) : Display::Variables();
}

}  // namespace Agent
