#pragma once

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>

struct sd_bus;

namespace TestSupport {

// A system bus of its own with a network manager on it, which has two active connections: an Ethernet one on
// eth0, and one on `link` or with `address`. From its making on, the test program's system bus is this one.
// It does without our wrapper (libs/Bus), which can neither answer nothing nor send all types that a network
// manager sends.
class FakeNetworkManager {
 public:
  struct Connection {
    std::string link;     // the device's interface
    std::string address;  // IPv4
    bool isVPN = true;
  };
  // A manager that is `silent` owns its name and answers nothing; what it is asked is counted.
  explicit FakeNetworkManager(Connection second, bool silent = false);
  ~FakeNetworkManager();

  // How often a silent one was asked so far.
  [[nodiscard]] int Questions() const { return questions_; }

  struct Properties;

 private:
  void StartBus();
  void Serve();

  TemporaryFolder folder_;
  std::unique_ptr<ChildProcess> daemon_;
  std::unique_ptr<Properties> properties_;
  std::atomic<int> questions_ = 0;
  sd_bus* bus_ = nullptr;
  int stop_ = -1;
  std::thread thread_;
};

}  // namespace TestSupport
