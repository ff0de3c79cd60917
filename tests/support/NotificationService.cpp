#include "support/NotificationService.h"

#include "libs/Bus/ServiceNames.h"

#include <chrono>
#include <stdexcept>
#include <utility>

namespace TestSupport {
namespace {

namespace Names = Bus::ServiceNames;
using PropertyList::Dictionary;

constexpr char kName[] = "org.freedesktop.Notifications";
constexpr char kPath[] = "/org/freedesktop/Notifications";

std::string TextIn(const Dictionary& dictionary, const char* key) {
  const auto* const value = dictionary.Find(key);
  return value != nullptr ? *value->As<std::string>() : "";
}

void Require(bool succeeded) {
  if (!succeeded) throw std::runtime_error("the notification service cannot be served");
}

// Returns when the agent has handled what this connection has sent so far.
void AwaitAgent(Bus::Connection& bus) {
  constexpr Bus::Service kAgent{Names::kServiceRecords, Names::kServiceRecordsPath,
                                "org.freedesktop.DBus.Peer"};
  Require(static_cast<bool>(bus.Call<>(kAgent, {}, "Ping")));
}

}  // namespace

NotificationService::NotificationService(const std::string& address)
    : bus_(std::move(*Bus::Connection::To(address))) {
  ServeNotifications();
  ServeWindow();
  Require(static_cast<bool>(bus_.RequestName(kName)));
  Require(static_cast<bool>(bus_.RequestName(Names::kStoresWindow)));
}

void NotificationService::ServeNotifications() {
  Bus::Interface interface(kName);
  interface.Method(
      "Notify",
      {"app_name", "replaces_id", "app_icon", "summary", "body", "actions", "hints", "expire_timeout"},
      {"id"},
      [this](const std::string& /*program*/, std::uint32_t /*replaces*/, const std::string& /*icon*/,
             const std::string& summary, const std::string& body, const std::vector<std::string>& actions,
             const Dictionary& hints, std::int32_t /*milliseconds*/) {
        shown_.push_back({summary, body, actions, TextIn(hints, "desktop-entry")});
        return static_cast<std::uint32_t>(shown_.size());
      });
  interface.Signal<std::uint32_t, std::string>("ActionInvoked", {"id", "action"});
  Require(static_cast<bool>(Bus::Keep(notifications_, bus_.Serve(kPath, std::move(interface)))));
}

void NotificationService::ServeWindow() {
  Bus::Interface interface(Names::kApplicationInterface);
  interface.Method("ActivateAction", {"action_name", "parameter", "platform_data"}, {},
                   [this](const std::string& name, const std::vector<Bus::Variant<std::string>>& parameter,
                          const Dictionary& platformData) {
                     if (name != Names::kShowStoreAction || parameter.size() != 1) return;
                     opened_.emplace_back(parameter.front().value, TextIn(platformData, "activation-token"));
                   });
  Require(static_cast<bool>(Bus::Keep(window_, bus_.Serve(Names::kStoresWindowPath, std::move(interface)))));
}

void NotificationService::Press(const std::string& action) {
  // The agent knows the notification's number once it has handled the reply, which is ahead of this.
  AwaitAgent(bus_);
  SignalPressed(bus_, "token", action);
}

void NotificationService::Forge(const std::string& address, const std::string& action) {
  AwaitAgent(bus_);
  Bus::Connection stranger = std::move(*Bus::Connection::To(address));
  SignalPressed(stranger, "forged", action);
  AwaitAgent(stranger);
}

void NotificationService::SignalPressed(Bus::Connection& bus, const std::string& token,
                                        const std::string& action) const {
  const auto id = static_cast<std::uint32_t>(shown_.size());
  Require(static_cast<bool>(bus.Emit(kPath, kName, "ActivationToken", id, token)));
  Require(static_cast<bool>(bus.Emit(kPath, kName, "ActionInvoked", id, action)));
  Require(static_cast<bool>(bus.Emit(kPath, kName, "NotificationClosed", id, std::uint32_t{2})));
  Require(static_cast<bool>(bus.Flush()));
}

bool NotificationService::WaitUntil(const std::function<bool()>& condition) {
  const auto result =
      bus_.ProcessUntil(condition, std::chrono::steady_clock::now() + std::chrono::seconds(20));
  return result && *result;
}

}  // namespace TestSupport
