#pragma once

#include "libs/Bus/Connection.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace TestSupport {

// Stands in for the desktop's notification service, and for the stores window that a notification may open.
// Throws on failure. One thread.
class NotificationService {
 public:
  struct Notification {
    std::string summary;
    std::string body;
    std::vector<std::string> actions;
    std::string desktopEntry;
  };

  explicit NotificationService(const std::string& address);

  [[nodiscard]] const std::vector<Notification>& Shown() const { return shown_; }
  // The user presses the latest one; the service closes it then.
  void Press(const std::string& action);
  // Another client of the bus at this address says that the user pressed the latest one, and that it is
  // closed. Returns when the agent has handled that.
  void Forge(const std::string& address, const std::string& action);
  // The stores that the window was asked to show, each with the right to come to the front.
  [[nodiscard]] const std::vector<std::pair<std::string, std::string>>& Opened() const { return opened_; }

  // Handles messages until the condition holds; false when it does not within the time.
  [[nodiscard]] bool WaitUntil(const std::function<bool()>& condition);

 private:
  void ServeNotifications();
  void ServeWindow();
  void SignalPressed(Bus::Connection& bus, const std::string& token, const std::string& action) const;

  Bus::Connection bus_;
  Bus::Slot notifications_;
  Bus::Slot window_;
  std::vector<Notification> shown_;
  std::vector<std::pair<std::string, std::string>> opened_;
};

}  // namespace TestSupport
