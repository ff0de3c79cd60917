#include "libs/Bus/ServedInterface.h"

#include "libs/Bus/Callback.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace Bus {
namespace {

// Each line of the table has its entry of the interface as what its callback gets.
constexpr std::uint64_t kFlags = SD_BUS_VTABLE_ABSOLUTE_OFFSET;
template <class Entry>
std::size_t Handed(const Entry& entry) {
  return reinterpret_cast<std::size_t>(&entry);
}

}  // namespace

std::string Interface::Joined(Names first, Names second) {
  std::string joined;
  for (const Names& names : {first, second}) {
    for (const std::string& name : names) (joined += name) += '\0';
  }
  return joined;
}

ServedInterface::ServedInterface(Interface interface) : interface_(std::move(interface)) {
  table_.push_back(SD_BUS_VTABLE_START(0));
  for (const auto& method : interface_.methods_) table_.push_back(Line(method));
  for (const auto& property : interface_.properties_) table_.push_back(Line(property));
  for (const auto& signal : interface_.signals_) table_.push_back(Line(signal));
  table_.push_back(SD_BUS_VTABLE_END);
}

// Anyone on the user's bus may call.
sd_bus_vtable ServedInterface::Line(const Interface::MethodEntry& method) {
  sd_bus_vtable line =
      SD_BUS_METHOD_WITH_OFFSET(method.name.c_str(), method.arguments.c_str(), method.results.c_str(),
                                HandleCall, Handed(method), kFlags | SD_BUS_VTABLE_UNPRIVILEGED);
  line.x.method.names = method.names.c_str();
  return line;
}

sd_bus_vtable ServedInterface::Line(const Interface::PropertyEntry& property) {
  return SD_BUS_PROPERTY(property.name.c_str(), property.type.c_str(), GetProperty, Handed(property), kFlags);
}

sd_bus_vtable ServedInterface::Line(const Interface::SignalEntry& signal) {
  sd_bus_vtable line = SD_BUS_SIGNAL(signal.name.c_str(), signal.types.c_str(), 0);
  line.x.signal.names = signal.names.c_str();
  return line;
}

int ServedInterface::HandleCall(sd_bus_message* call, void* method, sd_bus_error* error) {
  const auto& entry = *static_cast<const Interface::MethodEntry*>(method);
  return CallbackResult([&] { return entry.handle(call); }, error);
}

int ServedInterface::GetProperty(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/,
                                 const char* /*name*/, sd_bus_message* reply, void* property,
                                 sd_bus_error* error) {
  const auto& entry = *static_cast<const Interface::PropertyEntry*>(property);
  return CallbackResult([&] { return entry.append(reply); }, error);
}

}  // namespace Bus
