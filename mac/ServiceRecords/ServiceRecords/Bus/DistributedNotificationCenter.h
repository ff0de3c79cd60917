#pragma once

#include "libs/Bus/Connection.h"

#include <functional>
#include <map>
#include <string>

namespace Agent {

// Notifications between the programs of one user: the signal Posted(name, object) on the session bus.
class DistributedNotificationCenter {
 public:
  // The center of the process, made on first use.
  static DistributedNotificationCenter& defaultCenter();

  // Sends and receives over this connection from now on, until Disconnect. Main thread.
  [[nodiscard]] Bus::Result<> Connect(Bus::Connection& bus);
  // Main thread; before the connection goes.
  void Disconnect();

  // Any thread; sent at once on the main thread, otherwise handed to the main loop. Dropped while there is no
  // connection.
  void postNotificationName(const std::string& name, const std::string& object);

  // Calls `handler` on the main thread for every notification of that name, whoever posts it. Needs no
  // connection yet.
  void addObserver(const std::string& name, std::function<void()> handler);
  void removeObserver(const std::string& name);

 private:
  struct Observer {
    std::function<void()> handler;
    Bus::Slot match;
  };

  void Send(const std::string& name, const std::string& object);
  Bus::Result<> Observe(const std::string& name, Observer& observer);

  Bus::Connection* bus_ = nullptr;
  Bus::Slot object_;
  std::map<std::string, Observer> observers_;
};

}  // namespace Agent
