#pragma once

#include "libs/Bus/Connection.h"
#include "libs/Bus/EventLoop.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace Srctl {

// A connection to the user's session bus in an event loop that also ends on signals. One thread.
class BusLoop {
 public:
  // Blocks the signals in this thread, for good. Nothing, and the reason in `problem`, when there is no
  // session bus or no loop.
  [[nodiscard]] static std::optional<BusLoop> Make(std::initializer_list<int> signals, std::string& problem);

  [[nodiscard]] Bus::Connection& Bus() { return bus_; }
  [[nodiscard]] Bus::EventLoop& Loop() { return loop_; }
  // Both last as long as this object.
  [[nodiscard]] Bus::Result<> AddMatch(const std::string& rule, Bus::Connection::MessageHandler handler);
  [[nodiscard]] Bus::Result<> AddCall(Bus::Result<Bus::Slot> call);

 private:
  BusLoop(Bus::EventLoop loop, Bus::Connection bus) : loop_(std::move(loop)), bus_(std::move(bus)) {}
  [[nodiscard]] Bus::Result<> Prepare(std::initializer_list<int> signals);

  Bus::EventLoop loop_;
  Bus::Connection bus_;
  std::vector<Bus::Slot> slots_;
};

}  // namespace Srctl
