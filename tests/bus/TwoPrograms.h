#pragma once

#include "libs/Bus/Connection.h"
#include "support/PrivateBus.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <utility>

// A service and a caller on a bus of their own, both on the test's thread.
class TwoPrograms : public testing::Test {
 protected:
  static constexpr char kName[] = "com.morvane.test.Service";
  static constexpr char kPath[] = "/com/morvane/test";
  static constexpr Bus::Service kService{kName, kPath, "com.morvane.test.Interface"};

  TwoPrograms() { EXPECT_TRUE(service_.RequestName(kName)); }

  static Bus::Interface NewInterface() { return Bus::Interface(kService.interface); }
  // In place of what was served before.
  void Serve(Bus::Interface interface) {
    object_.reset();
    ASSERT_TRUE(Bus::Keep(object_, service_.Serve(kPath, std::move(interface))));
  }
  // Serves one method, "method", whose names do not matter.
  template <class Handler>
  void ServeMethod(Handler handler) {
    Bus::Interface interface = NewInterface();
    interface.Method("method", {}, {}, std::move(handler));
    Serve(std::move(interface));
  }

  // Both programs do what there is to do until the condition holds; false when it never does.
  bool ProcessUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition() && std::chrono::steady_clock::now() < end) {
      static_cast<void>(service_.ProcessUntil(condition, Soon()));
      static_cast<void>(caller_.ProcessUntil(condition, Soon()));
    }
    return condition();
  }

  template <class... Results, class... Arguments>
  Bus::Result<Bus::Reading<Results...>> CallMethod(const Arguments&... arguments) {
    return Call<Results...>(kService, "method", arguments...);
  }
  template <class... Results, class... Arguments>
  Bus::Result<Bus::Reading<Results...>> Call(const Bus::Service& service, const char* method,
                                             const Arguments&... arguments) {
    std::optional<Bus::Result<Bus::Message>> reply;
    const auto slot = caller_.CallAsync(
        service, {}, method, [&reply](const Bus::Result<Bus::Message>& message) { reply = message; },
        arguments...);
    if (!slot) return slot.Failure();
    if (!ProcessUntil([&reply] { return reply.has_value(); })) return Bus::Error::Failed("no reply in time");
    if (!*reply) return reply->Failure();
    return (*reply)->template Read<Results...>();
  }

  TestSupport::PrivateBus bus_;
  Bus::Connection service_ = std::move(*Bus::Connection::To(bus_.Address()));
  Bus::Connection caller_ = std::move(*Bus::Connection::To(bus_.Address()));
  Bus::Slot object_;

 private:
  static std::chrono::steady_clock::time_point Soon() {
    return std::chrono::steady_clock::now() + std::chrono::milliseconds(2);
  }
};
