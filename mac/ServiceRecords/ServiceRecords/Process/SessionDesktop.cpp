#include "Process/SessionDesktop.h"

#include "libs/Bus/Connection.h"

#include <chrono>
#include <string>
#include <vector>

namespace Agent {
namespace {

constexpr Bus::Service kServiceManager{"org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                                       "org.freedesktop.systemd1.Manager"};
constexpr std::chrono::seconds kPatience{2};

}  // namespace

Display::Variables SessionDesktop() {
  Bus::Result<Bus::Connection> bus = Bus::Connection::ToUserBus();
  if (!bus || !bus->AwaitReady(std::chrono::steady_clock::now() + kPatience)) return {};
  const auto environment = bus->Property<std::vector<std::string>>(
      kServiceManager, {.timeOut = kPatience, .startsService = false}, "Environment");
  return environment ? Display::Among(*environment) : Display::Variables();
}

}  // namespace Agent
