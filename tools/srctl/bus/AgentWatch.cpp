#include "bus/AgentWatch.h"

#include "bus/DictionaryEntries.h"
#include "libs/Bus/ServiceNames.h"

#include <unistd.h>

#include <csignal>
#include <utility>

namespace Srctl {
namespace {

using Kind = AgentEvent::Kind;
using PropertyList::Dictionary;

// The agent may first have to be started.
constexpr std::chrono::seconds kAnswerTime{60};
constexpr Bus::Service kAgent{Bus::ServiceNames::kServiceRecords, Bus::ServiceNames::kServiceRecordsPath,
                              "org.freedesktop.DBus.Peer"};
constexpr Bus::Service kBeacons{Bus::ServiceNames::kBeacons, Bus::ServiceNames::kBeaconsPath,
                                Bus::ServiceNames::kBeaconsInterface};

constexpr Bus::Service kStores{Bus::ServiceNames::kServiceRecords, Bus::ServiceNames::kServiceRecordsPath,
                               Bus::ServiceNames::kServiceRecordsInterface};

AgentEvent EventOf(Kind kind, const Dictionary& store) {
  AgentEvent event{.kind = kind};
  DictionaryEntries entries(store);
  entries.Take("StoreID", event.storeID);
  entries.Take("StoreName", event.storeName);
  entries.Take("StoreURL", event.storeURL);
  entries.Take("Change", event.change);
  entries.Take("GatewayName", event.gateway);
  return event;
}

}  // namespace

AgentWatch::End AgentWatch::Run() {
  const bool isOver = talk_.Run({SIGINT, SIGTERM}, "it cannot be watched", [this] { return Begin(); });
  return isOver ? end_ : End::Unreachable;
}

Bus::Result<> AgentWatch::Begin() {
  Bus::Result<> result = AddMatches();
  if (result) result = StartAgent();
  if (result) WatchOutput();
  return result;
}

Bus::Result<> AgentWatch::AddMatches() {
  using Bus::ServiceNames::NotificationMatch;
  Bus::Result<> result = talk_.AddMatch(NotificationMatch(Bus::ServiceNames::kStoresUpdatedNotification),
                                        [this](const Bus::Message& /*signal*/) {
                                          if (isWatching_) Tell({.kind = Kind::StoresUpdated});
                                        });
  if (result) {
    result = talk_.AddMatch(NotificationMatch(Bus::ServiceNames::kLocationChangedNotification),
                            [this](const Bus::Message& signal) { HandleLocationChanged(signal); });
  }
  if (result) {
    result = talk_.AddMatch(std::string("type='signal',path='") + Bus::ServiceNames::kOpeningsPath +
                                "',interface='" + Bus::ServiceNames::kOpeningsInterface + "',member='" +
                                Bus::ServiceNames::kStoresChangedSignal + "'",
                            [this](const Bus::Message& signal) { HandleStoresChanged(signal); });
  }
  if (result) {
    result = talk_.AddOwnerAndLoss([this](const Bus::Message& signal) { HandleOwner(signal); });
  }
  return result;
}

Bus::Result<> AgentWatch::StartAgent() {
  return talk_.AddCall(
      talk_.Bus().CallAsync(kAgent, {.timeOut = kAnswerTime}, "Ping",
                            [this](const Bus::Result<Bus::Message>& reply) { HandleStart(reply); }));
}

// A file cannot be watched, and need not be: nobody closes it at its other end.
void AgentWatch::WatchOutput() {
  static_cast<void>(
      Bus::Keep(output_, talk_.Loop().WatchClosed(STDOUT_FILENO, [this] { Finish(End::NobodyReads); })));
}

void AgentWatch::AskForStores() {
  Bus::Result<Bus::Slot> question =
      talk_.Bus().CallAsync(kStores, {.timeOut = kAnswerTime, .startsService = false}, "allStores",
                            [this](const Bus::Result<Bus::Message>& reply) { HandleStores(reply); });
  if (question) Bus::LeaveToConnection(std::move(*question));
}

// Who watches does not bring back an agent that has left.
void AgentWatch::AskForLocation(const std::string& storeURL) {
  const auto handleReply = [this, storeURL](const Bus::Result<Bus::Message>& reply) {
    HandleLocation(storeURL, reply);
  };
  Bus::Result<Bus::Slot> question =
      talk_.Bus().CallAsync(kBeacons, {.timeOut = kAnswerTime, .startsService = false},
                            "checkLocationForStore", handleReply, storeURL);
  if (question) Bus::LeaveToConnection(std::move(*question));
}

void AgentWatch::Tell(const AgentEvent& event) {
  if (!report_(event)) Finish(End::NobodyReads);
}

void AgentWatch::Finish(End end) {
  end_ = end;
  talk_.Finish();
}

void AgentWatch::HandleStart(const Bus::Result<Bus::Message>& reply) {
  if (!reply) return talk_.Fail(reply.Failure().text);
  isWatching_ = true;
  agent_ = reply->Sender();
  Tell({.kind = Kind::Watching});
  if (beginning_ == Beginning::TellsPresentState) AskForStores();
}

void AgentWatch::HandleStores(const Bus::Result<Bus::Message>& reply) {
  if (!reply) return talk_.Fail(reply.Failure().text);
  const auto stores = reply->Read<std::vector<Dictionary>>();
  if (!stores) return talk_.Fail("its answer cannot be read: " + stores.Failure().text);
  for (const Dictionary& store : *stores) {
    const AgentEvent event = EventOf(Kind::Store, store);
    Tell(event);
    AskForLocation(event.storeURL);
  }
}

void AgentWatch::HandleStoresChanged(const Bus::Message& signal) {
  const auto changes = signal.Read<std::vector<Dictionary>>();
  if (!isWatching_ || signal.Sender() != agent_ || !changes) return;
  for (const Dictionary& change : *changes) Tell(EventOf(Kind::StoreChanged, change));
}

void AgentWatch::HandleLocationChanged(const Bus::Message& signal) {
  const auto posted = signal.Read<std::string, std::string>();
  if (isWatching_ && posted) AskForLocation(std::get<1>(*posted));
}

void AgentWatch::HandleLocation(const std::string& storeURL, const Bus::Result<Bus::Message>& reply) {
  AgentEvent event{.kind = Kind::LocationChanged, .storeURL = storeURL};
  if (reply) {
    if (const auto location = reply->Read<std::uint64_t>()) event.location = *location;
  }
  const auto [told, isNew] = locations_.try_emplace(storeURL, event.location);
  if (!isNew && std::exchange(told->second, event.location) == event.location) return;
  Tell(event);
}

void AgentWatch::HandleOwner(const Bus::Message& signal) {
  const auto change = signal.Read<std::string, std::string, std::string>();
  if (!isWatching_ || !change) return;
  agent_ = std::get<2>(*change);
  Tell({.kind = agent_.empty() ? Kind::AgentLeft : Kind::AgentCame});
}

}  // namespace Srctl
