#include "agent/ServiceOnBus.h"

#include "libs/Bus/ServiceNames.h"

#include <gtest/gtest.h>

#include <utility>

ServiceOnBus::ServiceOnBus(Bus::Interface interface)
    : connection_(std::move(*Bus::Connection::To(bus_.Address()))), client_(bus_.Address()) {
  EXPECT_TRUE(
      Bus::Keep(object_, connection_.Serve(Bus::ServiceNames::kServiceRecordsPath, std::move(interface))));
  EXPECT_TRUE(connection_.RequestName(Bus::ServiceNames::kServiceRecords));
}

// The first answer tells that it has been read, the second one that it has been written.
void ServiceOnBus::AwaitPassedOn() {
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(client_.HasOwner(Bus::ServiceNames::kServiceRecords));
}
