#pragma once

#include "libs/Bus/Connection.h"
#include "libs/Bus/EventLoop.h"

#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace Srctl {

// What is said to the agent and heard from it over a connection of its own to the user's session bus, until
// somebody ends it, a signal comes or the bus is gone. One thread.
class AgentTalk {
 public:
  AgentTalk() = default;
  AgentTalk(const AgentTalk&) = delete;
  AgentTalk& operator=(const AgentTalk&) = delete;

  // Once. Connects, lets `begin` add what is waited for, and waits. Blocks the signals in this thread, for
  // good. False when Problem() says why, beginning with `notBegun` where it was `begin` that failed.
  [[nodiscard]] bool Run(std::initializer_list<int> signals, const std::string& notBegun,
                         const std::function<Bus::Result<>()>& begin);

  // All of these from `begin` on. What is added lasts as long as this object.
  [[nodiscard]] Bus::Connection& Bus() { return *bus_; }
  [[nodiscard]] Bus::EventLoop& Loop() { return *loop_; }
  [[nodiscard]] Bus::Result<> AddMatch(const std::string& rule, Bus::Connection::MessageHandler handler);
  [[nodiscard]] Bus::Result<> AddCall(Bus::Result<Bus::Slot> call);
  // Calls the handler whenever the agent leaves the bus or comes to it. The loss of the bus is a failure.
  [[nodiscard]] Bus::Result<> AddOwnerAndLoss(Bus::Connection::MessageHandler handleOwner);
  void Finish();
  void Fail(const std::string& problem);

  [[nodiscard]] const std::string& Problem() const { return problem_; }

 private:
  [[nodiscard]] bool Connect(std::initializer_list<int> signals);
  [[nodiscard]] Bus::Result<> MakeLoop(std::initializer_list<int> signals);

  std::string problem_;
  bool hasFailed_ = false;
  std::optional<Bus::EventLoop> loop_;
  std::optional<Bus::Connection> bus_;
  std::vector<Bus::Slot> slots_;
};

}  // namespace Srctl
