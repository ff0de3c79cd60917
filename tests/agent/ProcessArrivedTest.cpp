#include "agent/ServiceOnBus.h"
#include "libs/Bus/ServiceNames.h"

#include <gtest/gtest.h>

namespace {

Bus::Interface CallingFor(const std::function<void()>& handler) {
  Bus::Interface interface(Bus::ServiceNames::kServiceRecordsInterface);
  interface.Method("allStores", {}, {}, [handler] { handler(); });
  return interface;
}

TEST(ProcessArrivedTest, WhatHasArrivedIsHandledAndNotWhatGoesOnComing) {
  constexpr int kArrived = 3;
  constexpr int kEnough = 50;
  int handled = 0;
  std::optional<ServiceOnBus> service;
  service.emplace(CallingFor([&] {
    // Each call is followed by another one, which is there before it is answered.
    if (++handled < kEnough) {
      service->Client().StartServiceRecords("allStores");
      service->AwaitPassedOn();
    }
  }));
  for (int i = 0; i < kArrived; ++i) service->Client().StartServiceRecords("allStores");
  service->AwaitPassedOn();
  service->Connection().ProcessArrived();
  EXPECT_EQ(handled, kArrived);
}

TEST(ProcessArrivedTest, NothingIsWaitedForWhereNothingHasArrived) {
  int handled = 0;
  ServiceOnBus service(CallingFor([&] { ++handled; }));
  service.Connection().ProcessArrived();
  EXPECT_EQ(handled, 0);
}

}  // namespace
