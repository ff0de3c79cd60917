#pragma once

#include "libs/Bus/SdBus.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// Something that happened around the agent.
struct AgentEvent {
  enum class Kind { Watching, StoresUpdated, LocationChanged, AgentLeft, AgentCame };

  Kind kind = Kind::Watching;
  // Of a changed location: relative to which store, and the new one; nothing when the agent did not tell.
  std::string storeURL = {};
  std::optional<std::uint64_t> location = {};
};

// Watches the agent over the user's session bus, which starts it when it is not running. One thread.
class AgentWatch {
 public:
  enum class End {
    Asked,        // by SIGINT or SIGTERM
    Unreachable,  // Problem() says why
    NobodyReads,  // standard output is closed, or the report failed
  };
  // False when the event could not be reported.
  using Report = std::function<bool(const AgentEvent&)>;

  explicit AgentWatch(Report report) : report_(std::move(report)) {}
  AgentWatch(const AgentWatch&) = delete;
  AgentWatch& operator=(const AgentWatch&) = delete;

  // Reports Watching when the agent runs and nothing is missed from then on, then everything in its order,
  // until the watch ends. Blocks SIGINT and SIGTERM in this thread, for good. Waits without a time.
  [[nodiscard]] End Run();

  [[nodiscard]] const std::string& Problem() const { return problem_; }

 private:
  struct Question;

  [[nodiscard]] int Prepare();
  [[nodiscard]] int WatchSignals();
  [[nodiscard]] int AddMatches();
  [[nodiscard]] int AddMatch(const std::string& match, sd_bus_message_handler_t handler);
  [[nodiscard]] int StartAgent();
  void WatchOutput();
  [[nodiscard]] int AskForLocation(const std::string& storeURL);
  void Tell(const AgentEvent& event);
  int Finish(End end);
  int FinishUnreachable(const std::string& problem);

  static int HandleStart(sd_bus_message* reply, void* self, sd_bus_error* error);
  static int HandleStoresUpdated(sd_bus_message* signal, void* self, sd_bus_error* error);
  static int HandleLocationChanged(sd_bus_message* signal, void* self, sd_bus_error* error);
  static int HandleLocation(sd_bus_message* reply, void* question, sd_bus_error* error);
  static int HandleOwner(sd_bus_message* signal, void* self, sd_bus_error* error);
  static int HandleDisconnected(sd_bus_message* signal, void* self, sd_bus_error* error);
  static int HandleOutput(sd_event_source* source, int descriptor, std::uint32_t events, void* self);

  Report report_;
  std::string problem_;
  bool isWatching_ = false;  // what comes before belongs to the agent's start
  End end_ = End::Asked;
  EventLoopPtr loop_;
  BusPtr bus_;
  std::vector<BusSlotPtr> slots_;
};
