#pragma once

#include "Session.h"
#include "Shared/Owners.h"
#include "stores-window/MainLoop.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace Stores {

// A connection to a bus of the test's.
[[nodiscard]] inline Windows::ObjectPtr<GDBusConnection> ConnectToBus(const std::string& address) {
  const int flags =
      G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION;
  Windows::ObjectPtr<GDBusConnection> bus(g_dbus_connection_new_for_address_sync(
      address.c_str(), static_cast<GDBusConnectionFlags>(flags), nullptr, nullptr, nullptr));
  if (!bus) throw std::runtime_error("there is no bus at " + address);
  return bus;
}

// Lets what a session was still waiting for come to its end.
struct CancelledCalls {
  CancelledCalls() = default;
  ~CancelledCalls() { RunPending(); }
  CancelledCalls(const CancelledCalls&) = delete;
  CancelledCalls& operator=(const CancelledCalls&) = delete;
};

// A session with, in place of its window, notes of what it tells.
struct ObservedSession {
  explicit ObservedSession(const std::string& busAddress)
      : bus(ConnectToBus(busAddress)),
        session(bus.get(), {.show = [this](const Overview& shown) { overviews.push_back(shown); },
                            .reloaded = [] {},
                            .note = [this](const Notice& notice) { notices.push_back(notice); },
                            .refused = [this] { ++refusals; },
                            .openingsEnded = [this] { ++openingsEnded; },
                            .loggingChanged = [this] { ++loggingChanges; }}) {}

  [[nodiscard]] Overview Last() const { return overviews.empty() ? Overview{} : overviews.back(); }
  [[nodiscard]] bool RunUntilPage(Overview::Page page) {
    return RunUntil([this, page] { return Last().page == page; });
  }
  [[nodiscard]] std::vector<std::string> IDs() const {
    std::vector<std::string> ids;
    for (guint position = 0; position < session.Stores().Count(); ++position) {
      ids.push_back(StoreOf(session.Stores().At(position)).id);
    }
    return ids;
  }

  Windows::ObjectPtr<GDBusConnection> bus;
  std::vector<Overview> overviews;
  std::vector<Notice> notices;
  int refusals = 0;
  int openingsEnded = 0;
  int loggingChanges = 0;
  const CancelledCalls cancelled;
  Session session;
};

}  // namespace Stores
