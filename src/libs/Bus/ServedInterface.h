#pragma once

#include "libs/Bus/Interface.h"

#include <string>
#include <vector>

namespace Bus {

// An interface in the form of the bus's library, which refers to it for as long as it is served.
class ServedInterface {
 public:
  explicit ServedInterface(Interface interface);
  ServedInterface(const ServedInterface&) = delete;
  ServedInterface& operator=(const ServedInterface&) = delete;

  [[nodiscard]] const std::string& Name() const { return interface_.name_; }
  [[nodiscard]] const sd_bus_vtable* Table() const { return table_.data(); }

 private:
  [[nodiscard]] static sd_bus_vtable Line(const Interface::MethodEntry& method);
  [[nodiscard]] static sd_bus_vtable Line(const Interface::PropertyEntry& property);
  [[nodiscard]] static sd_bus_vtable Line(const Interface::SignalEntry& signal);
  static int HandleCall(sd_bus_message* call, void* method, sd_bus_error* error);
  static int GetProperty(sd_bus* bus, const char* path, const char* interface, const char* name,
                         sd_bus_message* reply, void* property, sd_bus_error* error);

  const Interface interface_;
  std::vector<sd_bus_vtable> table_;
};

}  // namespace Bus
