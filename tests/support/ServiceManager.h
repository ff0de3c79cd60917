#pragma once

#include "libs/Files/EventFd.h"

#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace TestSupport {

// Stands in for the user's service manager on a session bus. Answers by itself, until its end. Throws on
// failure.
class ServiceManager {
 public:
  // `environment`: with which it starts programs, as NAME=value. `pause`: before it tells it.
  ServiceManager(const std::string& address, const std::vector<std::string>& environment,
                 std::chrono::milliseconds pause = {});
  ~ServiceManager();
  ServiceManager(const ServiceManager&) = delete;
  ServiceManager& operator=(const ServiceManager&) = delete;

 private:
  void Serve(const std::string& address, const std::vector<std::string>& environment,
             std::chrono::milliseconds pause);

  const Files::EventFd end_;
  std::promise<void> isServed_;
  std::thread thread_;
};

}  // namespace TestSupport
