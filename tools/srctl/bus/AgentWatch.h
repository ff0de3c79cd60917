#pragma once

#include "bus/AgentTalk.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace Srctl {

// Something that happened around the agent.
struct AgentEvent {
  enum class Kind { Watching, Store, StoreChanged, StoresUpdated, LocationChanged, AgentLeft, AgentCame };

  Kind kind = Kind::Watching;
  // Of a store that is in the list, or has changed there: as the bus names the change; the new default
  // gateway where that is what changed.
  std::string storeID = {};
  std::string storeName = {};
  std::string change = {};
  std::string gateway = {};
  // Of a store, too. Of a changed location: relative to which store, and the new one; nothing when the agent
  // did not tell.
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

  enum class Beginning { Silent, TellsPresentState };

  AgentWatch(Beginning beginning, Report report) : beginning_(beginning), report_(std::move(report)) {}
  AgentWatch(const AgentWatch&) = delete;
  AgentWatch& operator=(const AgentWatch&) = delete;

  // Reports Watching when the agent runs and nothing is missed from then on, then each store and its location
  // where that is asked for, then everything in its order, but no location twice, until the watch ends.
  // Blocks SIGINT and SIGTERM in this thread, for good. Waits without a time.
  [[nodiscard]] End Run();

  [[nodiscard]] const std::string& Problem() const { return talk_.Problem(); }

 private:
  [[nodiscard]] Bus::Result<> Begin();
  [[nodiscard]] Bus::Result<> AddMatches();
  [[nodiscard]] Bus::Result<> StartAgent();
  void WatchOutput();
  void AskForStores();
  void AskForLocation(const std::string& storeURL);
  void Tell(const AgentEvent& event);
  void Finish(End end);

  void HandleStart(const Bus::Result<Bus::Message>& reply);
  void HandleStores(const Bus::Result<Bus::Message>& reply);
  void HandleStoresChanged(const Bus::Message& signal);
  void HandleLocationChanged(const Bus::Message& signal);
  void HandleLocation(const std::string& storeURL, const Bus::Result<Bus::Message>& reply);
  void HandleOwner(const Bus::Message& signal);

  Beginning beginning_;
  Report report_;
  bool isWatching_ = false;  // what comes before belongs to the agent's start
  std::string agent_;        // its unique name; nothing while it is not on the bus
  std::map<std::string, std::optional<std::uint64_t>> locations_;  // told last, by the store's URL
  End end_ = End::Asked;
  AgentTalk talk_;
  Bus::EventSource output_;  // declared last: it is the talk's
};

}  // namespace Srctl
