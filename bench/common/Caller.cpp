#include "common/Caller.h"

#include "libs/Bus/ServiceNames.h"
#include "support/BusConnection.h"

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace Bench {
namespace {

using TestSupport::CheckBus;

constexpr std::chrono::microseconds kTimeOfCall = std::chrono::seconds(60);

}  // namespace

Caller::Target Caller::ServiceRecords() {
  return {Bus::ServiceNames::kServiceRecords, Bus::ServiceNames::kServiceRecordsPath,
          Bus::ServiceNames::kServiceRecordsInterface};
}

Caller::Target Caller::Beacons() {
  return {Bus::ServiceNames::kBeacons, Bus::ServiceNames::kBeaconsPath, Bus::ServiceNames::kBeaconsInterface};
}

Caller::Caller(const std::string& busAddress, Target target)
    : bus_(TestSupport::ConnectToBus(busAddress)), target_(std::move(target)) {}

Bus::BusMessagePtr Caller::Send(const char* interface, const char* method, const std::string* argument,
                                std::chrono::microseconds limit) {
  sd_bus_message* message = nullptr;
  CheckBus(sd_bus_message_new_method_call(bus_.get(), &message, target_.name.c_str(), target_.path.c_str(),
                                          interface, method),
           method);
  const Bus::BusMessagePtr call(message);
  if (argument != nullptr) CheckBus(sd_bus_message_append_basic(message, 's', argument->c_str()), method);
  sd_bus_message* reply = nullptr;
  CheckBus(sd_bus_call(bus_.get(), message, static_cast<std::uint64_t>(limit.count()), nullptr, &reply),
           method);
  return Bus::BusMessagePtr(reply);
}

Bus::BusMessagePtr Caller::Call(const char* method, const std::string* argument) {
  return Send(target_.interface.c_str(), method, argument, kTimeOfCall);
}

void Caller::Ping() {
  Send("org.freedesktop.DBus.Peer", "Ping", nullptr, kTimeOfCall);
}

std::chrono::nanoseconds Caller::TimeOf(const char* method, std::chrono::microseconds limit) {
  const auto begin = std::chrono::steady_clock::now();
  try {
    Send(target_.interface.c_str(), method, nullptr, limit);
  } catch (const std::system_error& error) {
    if (error.code().value() != ETIMEDOUT) throw;
    return limit;
  }
  return std::chrono::steady_clock::now() - begin;
}

}  // namespace Bench
