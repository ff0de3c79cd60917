#include "agent/ServiceOnBus.h"

#include "libs/Bus/ServiceNames.h"
#include "support/BusConnection.h"

#include <gtest/gtest.h>

#include <utility>

using namespace testsupport;

ServiceOnBus::ServiceOnBus(Handler handler) : handler_(std::move(handler)) {
  const std::string address = "unix:path=" + (folder_.Path() / "bus").string();
  bus_.emplace(std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--nosyslog",
                                        "--address=" + address, "--print-address"});
  bus_->WaitForOutput("unix:path=");
  connection_ = ConnectToBus(address);
  sd_bus_slot* slot = nullptr;
  CheckBus(sd_bus_add_object(connection_.get(), &slot, ServiceNames::kServiceRecordsPath, Handle, this),
           "object");
  object_.reset(slot);
  CheckBus(sd_bus_request_name(connection_.get(), ServiceNames::kServiceRecords, 0), "name");
  client_.emplace(address);
}

int ServiceOnBus::Handle(sd_bus_message* call, void* self, sd_bus_error* /*error*/) {
  return static_cast<ServiceOnBus*>(self)->handler_(sd_bus_message_get_member(call), call);
}

// The first answer tells that it has been read, the second one that it has been written.
void ServiceOnBus::AwaitPassedOn() {
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(client_->HasOwner(ServiceNames::kServiceRecords));
}
