#pragma once

#include "SRLib/Provider/Opening.h"
#include "libs/Bus/Connection.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace Agent {

// What the user is told by the desktop's notification service, where there is one. Main thread, which waits
// for nothing.
class DesktopNotifications {
 public:
  // The text for the user with that id (Platform/Messages.h).
  using Messages = std::function<std::wstring(int id)>;

  // The main loop serves the connection, which outlives this object.
  DesktopNotifications(Bus::Connection& bus, Messages messages) : bus_(bus), messages_(std::move(messages)) {}

  // These stores are in the list now, though perhaps not in the saved one. A button, and the notification
  // itself, shows them in the stores window.
  void TellAccepted(const std::vector<ServiceRecords::Opening::Store>& stores);
  // Nobody could be asked about the file at this path.
  void TellUnasked(const std::string& path);
  // It could not be read.
  void TellUnread(const std::string& path);
  // Its path is not UTF-8, so it was not looked at.
  void TellUnusableName(const std::string& path);

 private:
  // What a notification shows when it is pressed, and by which right a window may come to the front.
  struct Shown {
    std::string service;  // its unique name: nobody else may say that it was pressed
    std::string storeID;
    std::string activationToken;
  };

  // `notice` takes the file's name.
  void TellOfFile(const std::string& path, int notice, int reason);
  void Notify(const std::wstring& summary, const std::wstring& body, const std::string& storeID);
  void HandleSignal(const Bus::Message& signal);
  void ShowStore(const Shown& shown);
  [[nodiscard]] Bus::Result<> Listen();

  Bus::Connection& bus_;
  const Messages messages_;
  Bus::Slot match_;  // from the first notification on
  std::map<std::uint32_t, Shown> shown_;
};

}  // namespace Agent
