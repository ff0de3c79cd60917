#include "wayfinder/FakeNetworkManager.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace TestSupport {

struct FakeNetworkManager::Properties {
  Connection first{.link = "eth0", .address = "192.0.2.2", .isVPN = false};
  Connection second;
};

namespace {

using Connection = FakeNetworkManager::Connection;

int GetActiveConnections(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                         sd_bus_error*) {
  return sd_bus_message_append(reply, "ao", 2, "/Connections/1", "/Connections/2");
}

std::string NumberOf(const char* path) {
  return std::string(path).substr(std::string(path).rfind('/') + 1);
}

int GetVpn(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* connection,
           sd_bus_error*) {
  return sd_bus_message_append(reply, "b", static_cast<int>(static_cast<Connection*>(connection)->isVPN));
}

int GetDevices(sd_bus*, const char* path, const char*, const char*, sd_bus_message* reply, void*,
               sd_bus_error*) {
  return sd_bus_message_append(reply, "ao", 1, ("/Devices/" + NumberOf(path)).c_str());
}

int GetIp4Config(sd_bus*, const char* path, const char*, const char*, sd_bus_message* reply, void*,
                 sd_bus_error*) {
  return sd_bus_message_append(reply, "o", ("/IP4Config/" + NumberOf(path)).c_str());
}

int GetNoConfig(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*, sd_bus_error*) {
  return sd_bus_message_append(reply, "o", "/");
}

int GetInterface(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* connection,
                 sd_bus_error*) {
  return sd_bus_message_append(reply, "s", static_cast<Connection*>(connection)->link.c_str());
}

int GetAddressData(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* connection,
                   sd_bus_error*) {
  return sd_bus_message_append(reply, "aa{sv}", 1, 2, "prefix", "u", 24, "address", "s",
                               static_cast<Connection*>(connection)->address.c_str());
}

const sd_bus_vtable kManager[] = {SD_BUS_VTABLE_START(0),
                                  SD_BUS_PROPERTY("ActiveConnections", "ao", GetActiveConnections, 0, 0),
                                  SD_BUS_VTABLE_END};
const sd_bus_vtable kActive[] = {SD_BUS_VTABLE_START(0),
                                 SD_BUS_PROPERTY("Vpn", "b", GetVpn, 0, 0),
                                 SD_BUS_PROPERTY("Devices", "ao", GetDevices, 0, 0),
                                 SD_BUS_PROPERTY("Ip4Config", "o", GetIp4Config, 0, 0),
                                 SD_BUS_PROPERTY("Ip6Config", "o", GetNoConfig, 0, 0),
                                 SD_BUS_VTABLE_END};
const sd_bus_vtable kDevice[] = {SD_BUS_VTABLE_START(0),
                                 SD_BUS_PROPERTY("Interface", "s", GetInterface, 0, 0),
                                 SD_BUS_PROPERTY("IpInterface", "s", GetInterface, 0, 0), SD_BUS_VTABLE_END};
const sd_bus_vtable kConfiguration[] = {SD_BUS_VTABLE_START(0),
                                        SD_BUS_PROPERTY("AddressData", "aa{sv}", GetAddressData, 0, 0),
                                        SD_BUS_VTABLE_END};

void Check(int result, const char* what) {
  if (result < 0) throw std::runtime_error(std::string("network manager: ") + what);
}

void Offer(sd_bus* bus, const std::string& path, const char* interface, const sd_bus_vtable* table,
           void* data) {
  const std::string name = std::string("org.freedesktop.NetworkManager") + interface;
  Check(sd_bus_add_object_vtable(bus, nullptr, path.c_str(), name.c_str(), table, data), "no object");
}

void OfferConnection(sd_bus* bus, const std::string& number, Connection& connection) {
  Offer(bus, "/Connections/" + number, ".Connection.Active", kActive, &connection);
  Offer(bus, "/Devices/" + number, ".Device", kDevice, &connection);
  Offer(bus, "/IP4Config/" + number, ".IP4Config", kConfiguration, &connection);
}

// A message that a filter takes gets no answer.
int CountQuestion(sd_bus_message* message, void* count, sd_bus_error* /*error*/) {
  if (sd_bus_message_is_method_call(message, "org.freedesktop.DBus.Properties", "Get") <= 0) return 0;
  ++*static_cast<std::atomic<int>*>(count);
  return 1;
}

}  // namespace

FakeNetworkManager::FakeNetworkManager(Connection second, bool silent)
    : properties_(std::make_unique<Properties>()) {
  properties_->second = std::move(second);
  StartBus();
  Check(sd_bus_open_system(&bus_), "no bus");
  Offer(bus_, "/org/freedesktop/NetworkManager", "", kManager, nullptr);
  OfferConnection(bus_, "1", properties_->first);
  OfferConnection(bus_, "2", properties_->second);
  if (silent) Check(sd_bus_add_filter(bus_, nullptr, CountQuestion, &questions_), "no filter");
  Check(sd_bus_request_name(bus_, "org.freedesktop.NetworkManager", 0), "no name");
  stop_ = ::eventfd(0, EFD_CLOEXEC);
  thread_ = std::thread([this] { Serve(); });
}

FakeNetworkManager::~FakeNetworkManager() {
  eventfd_write(stop_, 1);
  if (thread_.joinable()) thread_.join();
  ::close(stop_);
  sd_bus_flush_close_unref(bus_);
  ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
}

void FakeNetworkManager::StartBus() {
  const std::string address = "unix:path=" + (folder_.Path() / "bus").string();
  std::ofstream(folder_.Path() / "bus.conf")
      << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\""
         " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n<busconfig><type>session</type>"
         "<listen>"
      << address
      << "</listen><policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
         "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>\n";
  daemon_ = std::make_unique<ChildProcess>(
      std::vector<std::string>{"dbus-daemon", "--nofork", "--nosyslog", "--print-address",
                               "--config-file=" + (folder_.Path() / "bus.conf").string()});
  daemon_->WaitForOutput("unix:path=");
  ::setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
}

void FakeNetworkManager::Serve() {
  while (true) {
    std::array<pollfd, 2> watched = {pollfd{stop_, POLLIN, 0}, pollfd{sd_bus_get_fd(bus_), POLLIN, 0}};
    while (sd_bus_process(bus_, nullptr) > 0) {
    }
    ::poll(watched.data(), watched.size(), -1);
    if ((watched[0].revents & POLLIN) != 0) return;
  }
}

}  // namespace TestSupport
