#include "Process/SessionDesktop.h"
#include "support/EnvironmentVariable.h"
#include "support/PrivateBus.h"
#include "support/ServiceManager.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>

using namespace std::chrono_literals;

namespace {

TEST(SessionDesktop, IsNoneWhereTheBusAndTheServiceManagerTogetherTakeTooLong) {
  TestSupport::PrivateBus bus;
  const TestSupport::EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", bus.Address());
  const TestSupport::ServiceManager manager(bus.Address(), {"DISPLAY=:2"}, 1700ms);
  bus.Pause();
  std::jthread later([&bus] {
    std::this_thread::sleep_for(1700ms);
    bus.GoOn();
  });
  EXPECT_TRUE(Agent::SessionDesktop().empty()) << "either alone would have been in time";
}

TEST(SessionDesktop, IsNoneWhereTheBusSaysNothingWhichIsNotWaitedForAtTheEndEither) {
  TestSupport::PrivateBus bus;
  const TestSupport::EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", bus.Address());
  bus.Pause();
  auto desktop = std::async(std::launch::async, Agent::SessionDesktop);
  const auto state = desktop.wait_for(30s);
  bus.GoOn();
  EXPECT_EQ(state, std::future_status::ready);
  EXPECT_TRUE(desktop.get().empty());
}

}  // namespace
