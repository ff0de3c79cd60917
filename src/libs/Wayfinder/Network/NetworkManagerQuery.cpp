#include "libs/Wayfinder/Network/NetworkManagerQuery.h"

#include "libs/Bus/Connection.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace Wayfinding {
namespace {

using std::chrono::microseconds;
using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kTimeLimit{500};
constexpr char kService[] = "org.freedesktop.NetworkManager";
constexpr char kManagerPath[] = "/org/freedesktop/NetworkManager";
constexpr char kActiveConnection[] = "org.freedesktop.NetworkManager.Connection.Active";

// Connects and reads NetworkManager's properties, all of that together within the time limit.
class Reader {
 public:
  // A call's own time limit would not count for the connection's set-up.
  Reader() : deadline_(steady_clock::now() + kTimeLimit) {
    Bus::Result<Bus::Connection> bus = Bus::Connection::ToSystemBus();
    if (bus && bus->AwaitReady(deadline_)) bus_ = std::move(*bus);
  }

  // An empty value when it cannot be read.
  template <class Type>
  [[nodiscard]] Type Get(const std::string& path, const char* interface, const char* name) {
    const auto left = std::chrono::duration_cast<microseconds>(deadline_ - steady_clock::now());
    if (!bus_ || left.count() <= 0) return {};
    Bus::Result<Type> value = bus_->Property<Type>({kService, path.c_str(), interface},
                                                   {.timeOut = left, .startsService = false}, name);
    return value ? std::move(*value) : Type{};
  }

 private:
  steady_clock::time_point deadline_;
  std::optional<Bus::Connection> bus_;
};

// A VPN's device is the one that it runs over; its own link is known by the addresses alone.
bool HasAnyAddress(Reader& reader, const std::string& connection, const std::vector<std::string>& addresses) {
  constexpr const char* kConfigurations[][2] = {{"Ip4Config", "org.freedesktop.NetworkManager.IP4Config"},
                                                {"Ip6Config", "org.freedesktop.NetworkManager.IP6Config"}};
  for (const auto& [property, interface] : kConfigurations) {
    const auto configuration = reader.Get<Bus::ObjectPath>(connection, kActiveConnection, property);
    const auto entries =
        reader.Get<std::vector<PropertyList::Dictionary>>(configuration.text, interface, "AddressData");
    for (const PropertyList::Dictionary& entry : entries) {
      const PropertyList::Value* const value = entry.Find("address");
      const auto* const address = value == nullptr ? nullptr : value->As<std::string>();
      if (address != nullptr && std::find(addresses.begin(), addresses.end(), *address) != addresses.end())
        return true;
    }
  }
  return false;
}

}  // namespace

bool NetworkManagerCallsVPN(const std::vector<std::string>& linkAddresses) {
  Reader reader;
  const auto connections =
      reader.Get<std::vector<Bus::ObjectPath>>(kManagerPath, kService, "ActiveConnections");
  return std::any_of(connections.begin(), connections.end(), [&](const Bus::ObjectPath& connection) {
    return reader.Get<bool>(connection.text, kActiveConnection, "Vpn") &&
           HasAnyAddress(reader, connection.text, linkAddresses);
  });
}

}  // namespace Wayfinding
