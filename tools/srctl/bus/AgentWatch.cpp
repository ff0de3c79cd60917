#include "bus/AgentWatch.h"

#include "bus/UserBus.h"
#include "libs/Bus/ServiceNames.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <memory>

namespace {

using Kind = AgentEvent::Kind;

// The agent may first have to be started.
constexpr std::uint64_t kAnswerMicroseconds = 60'000'000;
constexpr char kDisconnected[] =
    "type='signal',sender='org.freedesktop.DBus.Local',path='/org/freedesktop/DBus/Local',"
    "interface='org.freedesktop.DBus.Local',member='Disconnected'";

std::string TextOf(const sd_bus_error& error) {
  return error.message != nullptr ? error.message : error.name;
}

}  // namespace

// A location that the agent was asked for; freed with the slot of the call.
struct AgentWatch::Question {
  AgentWatch* watch;
  std::string storeURL;
};

AgentWatch::End AgentWatch::Run() {
  bus_ = OpenUserBus(problem_);
  if (!bus_) return End::Unreachable;
  if (const int status = Prepare(); status < 0) {
    problem_ = std::string("it cannot be watched: ") + std::strerror(-status);
    return End::Unreachable;
  }
  WatchOutput();
  const int status = sd_event_loop(loop_.get());
  slots_.clear();
  if (status >= 0) return end_;
  problem_ = std::string("the connection to it broke: ") + std::strerror(-status);
  return End::Unreachable;
}

int AgentWatch::Prepare() {
  sd_event* loop = nullptr;
  int status = sd_event_new(&loop);
  loop_.reset(loop);
  if (status >= 0) status = WatchSignals();
  if (status >= 0) status = sd_bus_attach_event(bus_.get(), loop, SD_EVENT_PRIORITY_NORMAL);
  if (status >= 0) status = AddMatches();
  if (status >= 0) status = StartAgent();
  return status;
}

int AgentWatch::WatchSignals() {
  sigset_t asked;
  ::sigemptyset(&asked);
  ::sigaddset(&asked, SIGINT);
  ::sigaddset(&asked, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &asked, nullptr);
  // Without a handler the loop ends.
  const int status = sd_event_add_signal(loop_.get(), nullptr, SIGINT, nullptr, nullptr);
  return status < 0 ? status : sd_event_add_signal(loop_.get(), nullptr, SIGTERM, nullptr, nullptr);
}

int AgentWatch::AddMatches() {
  int status = AddMatch(ServiceNames::NotificationMatch(ServiceNames::kStoresUpdatedNotification),
                        HandleStoresUpdated);
  if (status >= 0) {
    status = AddMatch(ServiceNames::NotificationMatch(ServiceNames::kLocationChangedNotification),
                      HandleLocationChanged);
  }
  if (status >= 0) status = AddMatch(MatchOwnerOf(ServiceNames::kServiceRecords), HandleOwner);
  if (status >= 0) status = AddMatch(kDisconnected, HandleDisconnected);
  return status;
}

int AgentWatch::AddMatch(const std::string& match, sd_bus_message_handler_t handler) {
  sd_bus_slot* slot = nullptr;
  const int status = sd_bus_add_match(bus_.get(), &slot, match.c_str(), handler, this);
  slots_.emplace_back(slot);
  return status;
}

int AgentWatch::StartAgent() {
  sd_bus_message* raw = nullptr;
  int status =
      sd_bus_message_new_method_call(bus_.get(), &raw, ServiceNames::kServiceRecords,
                                     ServiceNames::kServiceRecordsPath, "org.freedesktop.DBus.Peer", "Ping");
  const BusMessagePtr call(raw);
  sd_bus_slot* slot = nullptr;
  if (status >= 0) {
    status = sd_bus_call_async(bus_.get(), &slot, call.get(), HandleStart, this, kAnswerMicroseconds);
  }
  slots_.emplace_back(slot);
  return status;
}

// A file cannot be watched, and need not be: nobody closes it at its other end.
void AgentWatch::WatchOutput() {
  static_cast<void>(sd_event_add_io(loop_.get(), nullptr, STDOUT_FILENO, 0, HandleOutput, this));
}

int AgentWatch::AskForLocation(const std::string& storeURL) {
  sd_bus_message* raw = nullptr;
  int status =
      sd_bus_message_new_method_call(bus_.get(), &raw, ServiceNames::kBeacons, ServiceNames::kBeaconsPath,
                                     ServiceNames::kBeaconsInterface, "checkLocationForStore");
  const BusMessagePtr call(raw);
  if (status >= 0) status = sd_bus_message_append_basic(call.get(), 's', storeURL.c_str());
  // Who watches does not bring back an agent that has left.
  if (status >= 0) status = sd_bus_message_set_auto_start(call.get(), 0);
  if (status < 0) return status;
  auto question = std::make_unique<Question>(Question{this, storeURL});
  sd_bus_slot* slot = nullptr;
  status =
      sd_bus_call_async(bus_.get(), &slot, call.get(), HandleLocation, question.get(), kAnswerMicroseconds);
  if (status < 0) return status;
  const BusSlotPtr pending(slot);
  sd_bus_slot_set_destroy_callback(slot, [](void* asked) { delete static_cast<Question*>(asked); });
  static_cast<void>(question.release());
  return sd_bus_slot_set_floating(slot, 1);
}

void AgentWatch::Tell(const AgentEvent& event) {
  if (!report_(event)) Finish(End::NobodyReads);
}

int AgentWatch::Finish(End end) {
  end_ = end;
  return sd_event_exit(loop_.get(), 0);
}

int AgentWatch::FinishUnreachable(const std::string& problem) {
  problem_ = problem;
  return Finish(End::Unreachable);
}

int AgentWatch::HandleStart(sd_bus_message* reply, void* self, sd_bus_error* /*error*/) {
  auto& watch = *static_cast<AgentWatch*>(self);
  const sd_bus_error* const failure = sd_bus_message_get_error(reply);
  if (failure != nullptr) return watch.FinishUnreachable(TextOf(*failure));
  watch.isWatching_ = true;
  watch.Tell({.kind = Kind::Watching});
  return 0;
}

int AgentWatch::HandleStoresUpdated(sd_bus_message* /*signal*/, void* self, sd_bus_error* /*error*/) {
  auto& watch = *static_cast<AgentWatch*>(self);
  if (watch.isWatching_) watch.Tell({.kind = Kind::StoresUpdated});
  return 0;
}

int AgentWatch::HandleLocationChanged(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) {
  auto& watch = *static_cast<AgentWatch*>(self);
  const char* name = nullptr;
  const char* storeURL = nullptr;
  if (!watch.isWatching_ || sd_bus_message_read(signal, "ss", &name, &storeURL) < 0) return 0;
  return watch.AskForLocation(storeURL);
}

int AgentWatch::HandleLocation(sd_bus_message* reply, void* question, sd_bus_error* /*error*/) {
  const auto& asked = *static_cast<Question*>(question);
  AgentEvent event{.kind = Kind::LocationChanged, .storeURL = asked.storeURL};
  std::uint64_t location = 0;
  if (sd_bus_message_get_error(reply) == nullptr && sd_bus_message_read_basic(reply, 't', &location) > 0) {
    event.location = location;
  }
  asked.watch->Tell(event);
  return 0;
}

int AgentWatch::HandleOwner(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) {
  auto& watch = *static_cast<AgentWatch*>(self);
  const char* name = nullptr;
  const char* before = nullptr;
  const char* after = nullptr;
  if (!watch.isWatching_ || sd_bus_message_read(signal, "sss", &name, &before, &after) < 0) return 0;
  watch.Tell({.kind = *after == '\0' ? Kind::AgentLeft : Kind::AgentCame});
  return 0;
}

int AgentWatch::HandleDisconnected(sd_bus_message* /*signal*/, void* self, sd_bus_error* /*error*/) {
  return static_cast<AgentWatch*>(self)->FinishUnreachable("the session bus is gone");
}

int AgentWatch::HandleOutput(sd_event_source* /*source*/, int /*descriptor*/, std::uint32_t /*events*/,
                             void* self) {
  return static_cast<AgentWatch*>(self)->Finish(End::NobodyReads);
}
