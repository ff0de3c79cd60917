#include "agent/Outputs.h"
#include "agent/Scenarios.h"
#include "common/Caller.h"
#include "common/ServedAgent.h"
#include "libs/Bus/ServiceNames.h"
#include "support/BusConnection.h"

#include <sys/resource.h>

#include <algorithm>
#include <deque>
#include <stdexcept>
#include <string_view>

namespace Bench {
namespace {

using TestSupport::CheckBus;

constexpr std::size_t kStores = 10;
constexpr std::size_t kWatchers = 1000;
constexpr std::chrono::seconds kTimeToReach{20};

// Each client is a connection, and they are all in this process.
void AllowDescriptors() {
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 2 * kWatchers + 500);
  if (::setrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur < kWatchers + 200) {
    throw std::runtime_error("too few descriptors are allowed");
  }
}

int Count(sd_bus_message* /*message*/, void* counter, sd_bus_error* /*error*/) {
  ++*static_cast<int*>(counter);
  return 0;
}

// A program that watches the list.
struct Watcher {
  explicit Watcher(const std::string& address) : bus(TestSupport::ConnectToBus(address)) {
    const std::string rule =
        Bus::ServiceNames::NotificationMatch(Bus::ServiceNames::kStoresUpdatedNotification);
    CheckBus(sd_bus_add_match(bus.get(), nullptr, rule.c_str(), Count, &announcements), rule);
  }

  Bus::BusPtr bus;
  int announcements = 0;
};

// Sees every message that leaves the agent, as the bus gets it.
class Monitor {
 public:
  Monitor(const std::string& address, const std::string& sender) : bus_(TestSupport::ConnectToBus(address)) {
    const std::string rule = "sender='" + sender + "'";
    CheckBus(sd_bus_add_filter(bus_.get(), nullptr, Take, this), "filter");
    CheckBus(sd_bus_call_method(bus_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                "org.freedesktop.DBus.Monitoring", "BecomeMonitor", nullptr, nullptr, "asu",
                                1, rule.c_str(), 0),
             "BecomeMonitor");
  }

  // Until so many replies of the agent were seen.
  void WaitForReplies(int replies) {
    const auto deadline = std::chrono::steady_clock::now() + kTimeToReach;
    while (replies_ < replies && std::chrono::steady_clock::now() < deadline) {
      if (sd_bus_process(bus_.get(), nullptr) == 0) sd_bus_wait(bus_.get(), 100'000);
    }
  }
  [[nodiscard]] int Announcements() const { return announcements_; }

 private:
  static int Take(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
    auto& monitor = *static_cast<Monitor*>(self);
    const char* name = nullptr;
    if (sd_bus_message_is_method_call(message, nullptr, nullptr) == 0 &&
        sd_bus_message_is_signal(message, nullptr, nullptr) == 0) {
      ++monitor.replies_;
    } else if (sd_bus_message_is_signal(message, Bus::ServiceNames::kNotificationsInterface, "Posted") > 0 &&
               sd_bus_message_read(message, "s", &name) > 0 &&
               std::string_view(name) == Bus::ServiceNames::kStoresUpdatedNotification) {
      ++monitor.announcements_;
    }
    return 1;  // nobody answers what is only overheard
  }

  const Bus::BusPtr bus_;
  int replies_ = 0;
  int announcements_ = 0;
};

std::size_t CountReached(std::deque<Watcher>& watchers) {
  const auto deadline = std::chrono::steady_clock::now() + kTimeToReach;
  std::size_t reached = 0;
  for (Watcher& watcher : watchers) {
    while (watcher.announcements == 0 && std::chrono::steady_clock::now() < deadline) {
      if (sd_bus_process(watcher.bus.get(), nullptr) == 0) sd_bus_wait(watcher.bus.get(), 100'000);
    }
    if (watcher.announcements == 1) ++reached;
  }
  return reached;
}

std::string UniqueName(TestSupport::BusClient& client) {
  return client
      .Call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetNameOwner",
            {Bus::ServiceNames::kServiceRecords})
      .get<std::string>();
}

}  // namespace

void MeasureWatchers(Outputs& outputs) {
  AllowDescriptors();
  ServedAgent agent(kStores);
  agent.Start();
  const std::string address = agent.Agent().BusAddress();
  std::deque<Watcher> watchers;
  while (watchers.size() < kWatchers) watchers.emplace_back(address);
  Monitor monitor(address, UniqueName(agent.Agent().Bus()));
  Caller caller(address, Caller::ServiceRecords());
  caller.Call("handleDiscoveryDocument",
              TestSupport::DiscoveryDocument({StoreAsText(kStores, ServedShape())}));
  outputs.Add("UnreachedWatchers", static_cast<double>(kWatchers - CountReached(watchers)));
  caller.Ping();
  monitor.WaitForReplies(2);
  outputs.Add("AnnouncementMessages", monitor.Announcements());
}

}  // namespace Bench
