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
constexpr char kDevice[] = "org.freedesktop.NetworkManager.Device";

// Connects and reads NetworkManager's properties, all of that together within the time limit.
class Reader {
 public:
  // A call's own time limit would not count for the connection's set-up.
  Reader() : deadline_(steady_clock::now() + kTimeLimit) {
    Bus::Result<Bus::Connection> bus = Bus::Connection::ToSystemBus();
    if (bus && bus->AwaitReady(deadline_)) bus_ = std::move(*bus);
  }

  [[nodiscard]] bool Flag(const std::string& path, const char* interface, const char* name) {
    return Get<bool>(path, interface, name);
  }

  [[nodiscard]] std::string Text(const std::string& path, const char* interface, const char* name) {
    return Get<std::string>(path, interface, name);
  }

  // Empty, too, where there is no such object.
  [[nodiscard]] std::string Path(const std::string& path, const char* interface, const char* name) {
    return Get<Bus::ObjectPath>(path, interface, name).text;
  }

  [[nodiscard]] std::vector<std::string> Paths(const std::string& path, const char* interface,
                                               const char* name) {
    std::vector<std::string> paths;
    for (const auto& object : Get<std::vector<Bus::ObjectPath>>(path, interface, name))
      paths.push_back(object.text);
    return paths;
  }

  // The addresses of an IP4Config or IP6Config object.
  [[nodiscard]] std::vector<std::string> Addresses(const std::string& path, const char* interface) {
    std::vector<std::string> addresses;
    for (const auto& entry : Get<std::vector<PropertyList::Dictionary>>(path, interface, "AddressData")) {
      const PropertyList::Value* const value = entry.Find("address");
      const auto* const address = value == nullptr ? nullptr : value->As<std::string>();
      if (address != nullptr) addresses.push_back(*address);
    }
    return addresses;
  }

 private:
  // An empty value when it cannot be read.
  template <class Type>
  [[nodiscard]] Type Get(const std::string& path, const char* interface, const char* name) {
    const auto left = std::chrono::duration_cast<microseconds>(deadline_ - steady_clock::now());
    if (!bus_ || left.count() <= 0) return {};
    Bus::Result<Type> value = bus_->Property<Type>({kService, path.c_str(), interface},
                                                   {.timeOut = left, .startsService = false}, name);
    return value ? std::move(*value) : Type{};
  }

  steady_clock::time_point deadline_;
  std::optional<Bus::Connection> bus_;
};

bool HasDevice(Reader& reader, const std::string& connection, const std::string& linkName) {
  const std::vector<std::string> devices = reader.Paths(connection, kActiveConnection, "Devices");
  return std::any_of(devices.begin(), devices.end(), [&](const std::string& device) {
    return reader.Text(device, kDevice, "Interface") == linkName ||
           reader.Text(device, kDevice, "IpInterface") == linkName;
  });
}

// The device of a plug-in's VPN is the one that it runs over; its own link is known by the addresses.
bool HasAddress(Reader& reader, const std::string& connection,
                const std::vector<std::string>& linkAddresses) {
  constexpr const char* kConfigurations[][2] = {{"Ip4Config", "org.freedesktop.NetworkManager.IP4Config"},
                                                {"Ip6Config", "org.freedesktop.NetworkManager.IP6Config"}};
  for (const auto& [property, interface] : kConfigurations) {
    const std::string configuration = reader.Path(connection, kActiveConnection, property);
    if (configuration.size() <= 1) continue;
    const std::vector<std::string> addresses = reader.Addresses(configuration, interface);
    if (std::find_first_of(addresses.begin(), addresses.end(), linkAddresses.begin(), linkAddresses.end()) !=
        addresses.end())
      return true;
  }
  return false;
}

}  // namespace

bool NetworkManagerCallsVPN(const std::string& linkName, const std::vector<std::string>& linkAddresses) {
  Reader reader;
  for (const std::string& connection : reader.Paths(kManagerPath, kService, "ActiveConnections")) {
    if (reader.Flag(connection, kActiveConnection, "Vpn") &&
        (HasDevice(reader, connection, linkName) || HasAddress(reader, connection, linkAddresses)))
      return true;
  }
  return false;
}

}  // namespace Wayfinding
