#pragma once

#include "libs/Bus/SdBus.h"

#include <chrono>
#include <string>

namespace Bench {

// A program on the bus that calls one interface of one service and waits for each reply. Throws
// std::system_error. One thread. It does without our wrapper (libs/Bus), so that only the agent's use of that
// is measured.
class Caller {
 public:
  struct Target {
    std::string name;
    std::string path;
    std::string interface;
  };
  static Target ServiceRecords();
  static Target Beacons();

  Caller(const std::string& busAddress, Target target);

  // The calls take text, or nothing.
  Bus::BusMessagePtr Call(const char* method, const std::string* argument = nullptr);
  Bus::BusMessagePtr Call(const char* method, const std::string& argument) { return Call(method, &argument); }
  // The peer interface's, which every service has.
  void Ping();
  // How long the call takes; the limit itself when it takes longer.
  [[nodiscard]] std::chrono::nanoseconds TimeOf(const char* method, std::chrono::microseconds limit);

  [[nodiscard]] sd_bus& Bus() { return *bus_; }

 private:
  Bus::BusMessagePtr Send(const char* interface, const char* method, const std::string* argument,
                          std::chrono::microseconds limit);

  const Bus::BusPtr bus_;
  const Target target_;
};

}  // namespace Bench
