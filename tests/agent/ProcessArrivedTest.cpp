#include "Bus/BusObject.h"
#include "agent/ServiceOnBus.h"

#include <gtest/gtest.h>

namespace {

TEST(ProcessArrivedTest, WhatHasArrivedIsHandledAndNotWhatGoesOnComing) {
  constexpr int kArrived = 3;
  constexpr int kEnough = 50;
  int handled = 0;
  std::optional<ServiceOnBus> service;
  service.emplace([&](const std::string& /*method*/, sd_bus_message* call) {
    // Each call is followed by another one, which is there before it is answered.
    if (++handled < kEnough) {
      service->Client().StartServiceRecords("allStores");
      service->AwaitPassedOn();
    }
    return sd_bus_reply_method_return(call, nullptr);
  });
  for (int i = 0; i < kArrived; ++i) service->Client().StartServiceRecords("allStores");
  service->AwaitPassedOn();
  ProcessArrived(service->Connection());
  EXPECT_EQ(handled, kArrived);
}

TEST(ProcessArrivedTest, NothingIsWaitedForWhereNothingHasArrived) {
  int handled = 0;
  ServiceOnBus service([&](const std::string& /*method*/, sd_bus_message* call) {
    ++handled;
    return sd_bus_reply_method_return(call, nullptr);
  });
  ProcessArrived(service.Connection());
  EXPECT_EQ(handled, 0);
}

}  // namespace
