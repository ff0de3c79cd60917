#include "libs/Wayfinder/Network/NetworkManagerQuery.h"

#include "libs/Lifetime/UniqueHandle.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace Wayfinding {
namespace {

using std::chrono::microseconds;
using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kTimeLimit{500};
constexpr char kService[] = "org.freedesktop.NetworkManager";
constexpr char kManagerPath[] = "/org/freedesktop/NetworkManager";
constexpr char kActiveConnection[] = "org.freedesktop.NetworkManager.Connection.Active";
constexpr char kDevice[] = "org.freedesktop.NetworkManager.Device";

using MessagePtr = UniqueHandle<sd_bus_message, sd_bus_message_unref>;
// Nothing is worth flushing, and flushing waits.
using BusPtr = UniqueHandle<sd_bus, sd_bus_close_unref>;

// Connects and reads NetworkManager's properties, all of that together within the time limit.
class Reader {
 public:
  Reader() : deadline_(steady_clock::now() + kTimeLimit) {
    sd_bus* bus = nullptr;
    if (sd_bus_open_system(&bus) >= 0) bus_.reset(bus);
    if (bus_ != nullptr && !Connect()) bus_.reset();
  }

  [[nodiscard]] bool Flag(const std::string& path, const char* interface, const char* name) const {
    const MessagePtr value = Get(path, interface, name, "b");
    int flag = 0;
    return value != nullptr && sd_bus_message_read_basic(value.get(), 'b', &flag) > 0 && flag != 0;
  }

  // `type`: "s" or "o".
  [[nodiscard]] std::string Text(const std::string& path, const char* interface, const char* name,
                                 const char* type) const {
    const MessagePtr value = Get(path, interface, name, type);
    const char* text = nullptr;
    if (value == nullptr || sd_bus_message_read_basic(value.get(), *type, &text) <= 0) return {};
    return text;
  }

  [[nodiscard]] std::vector<std::string> Paths(const std::string& path, const char* interface,
                                               const char* name) const {
    const MessagePtr value = Get(path, interface, name, "ao");
    std::vector<std::string> paths;
    if (value == nullptr || sd_bus_message_enter_container(value.get(), 'a', "o") <= 0) return paths;
    const char* entry = nullptr;
    while (sd_bus_message_read_basic(value.get(), 'o', &entry) > 0) paths.emplace_back(entry);
    return paths;
  }

  // The addresses of an IP4Config or IP6Config object.
  [[nodiscard]] std::vector<std::string> Addresses(const std::string& path, const char* interface) const {
    const MessagePtr value = Get(path, interface, "AddressData", "aa{sv}");
    std::vector<std::string> addresses;
    if (value == nullptr || sd_bus_message_enter_container(value.get(), 'a', "a{sv}") <= 0) return addresses;
    while (sd_bus_message_enter_container(value.get(), 'a', "{sv}") > 0) {
      ReadAddress(*value, addresses);
      if (sd_bus_message_exit_container(value.get()) < 0) break;
    }
    return addresses;
  }

 private:
  // A call's own time limit would not count for the connection's set-up.
  [[nodiscard]] bool Connect() const {
    while (sd_bus_is_ready(bus_.get()) == 0) {
      const int progress = sd_bus_process(bus_.get(), nullptr);
      const std::uint64_t left = TimeLeft();
      if (progress < 0 || left == 0) return false;
      if (progress == 0 && sd_bus_wait(bus_.get(), left) < 0) return false;
    }
    return sd_bus_is_ready(bus_.get()) > 0;
  }

  [[nodiscard]] std::uint64_t TimeLeft() const {
    const auto left = std::chrono::duration_cast<microseconds>(deadline_ - steady_clock::now());
    return left.count() <= 0 ? 0 : static_cast<std::uint64_t>(left.count());
  }

  static void ReadAddress(sd_bus_message& dictionary, std::vector<std::string>& addresses) {
    while (sd_bus_message_enter_container(&dictionary, 'e', "sv") > 0) {
      const char* key = nullptr;
      const char* address = nullptr;
      if (sd_bus_message_read_basic(&dictionary, 's', &key) <= 0) return;
      if (std::string(key) == "address") {
        if (sd_bus_message_read(&dictionary, "v", "s", &address) <= 0) return;
        addresses.emplace_back(address);
      } else if (sd_bus_message_skip(&dictionary, "v") < 0) {
        return;
      }
      if (sd_bus_message_exit_container(&dictionary) < 0) return;
    }
  }

  // The reply, standing inside the property's variant.
  [[nodiscard]] MessagePtr Get(const std::string& path, const char* interface, const char* name,
                               const char* type) const {
    const std::uint64_t left = TimeLeft();
    sd_bus_message* made = nullptr;
    if (bus_ == nullptr || left == 0 ||
        sd_bus_message_new_method_call(bus_.get(), &made, kService, path.c_str(),
                                       "org.freedesktop.DBus.Properties", "Get") < 0)
      return nullptr;
    const MessagePtr call(made);
    sd_bus_message_set_auto_start(call.get(), 0);
    sd_bus_message* received = nullptr;
    if (sd_bus_message_append(call.get(), "ss", interface, name) < 0 ||
        sd_bus_call(bus_.get(), call.get(), left, nullptr, &received) < 0)
      return nullptr;
    MessagePtr reply(received);
    if (sd_bus_message_enter_container(reply.get(), 'v', type) <= 0) return nullptr;
    return reply;
  }

  steady_clock::time_point deadline_;
  BusPtr bus_;
};

bool HasDevice(const Reader& reader, const std::string& connection, const std::string& linkName) {
  const std::vector<std::string> devices = reader.Paths(connection, kActiveConnection, "Devices");
  return std::any_of(devices.begin(), devices.end(), [&](const std::string& device) {
    return reader.Text(device, kDevice, "Interface", "s") == linkName ||
           reader.Text(device, kDevice, "IpInterface", "s") == linkName;
  });
}

// The device of a plug-in's VPN is the one that it runs over; its own link is known by the addresses.
bool HasAddress(const Reader& reader, const std::string& connection,
                const std::vector<std::string>& linkAddresses) {
  constexpr const char* kConfigurations[][2] = {{"Ip4Config", "org.freedesktop.NetworkManager.IP4Config"},
                                                {"Ip6Config", "org.freedesktop.NetworkManager.IP6Config"}};
  for (const auto& [property, interface] : kConfigurations) {
    const std::string configuration = reader.Text(connection, kActiveConnection, property, "o");
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
  const Reader reader;
  for (const std::string& connection : reader.Paths(kManagerPath, kService, "ActiveConnections")) {
    if (reader.Flag(connection, kActiveConnection, "Vpn") &&
        (HasDevice(reader, connection, linkName) || HasAddress(reader, connection, linkAddresses)))
      return true;
  }
  return false;
}

}  // namespace Wayfinding
