#pragma once

#include "Agent/AgentConnection.h"
#include "Model/Overview.h"
#include "Model/StoreList.h"
#include "Model/StoreLocations.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Stores {

// What the window shows and does, without the window: the stores as the agent tells them, and the user's
// wishes on their way to it. The thread of the main context; nothing here waits.
class Session {
 public:
  struct Observer {
    std::function<void(const Overview&)> show;
    std::function<void()> reloaded;  // the list is what the agent has told, or could not be had
    std::function<void(const Notice&)> note;
    std::function<void()> refused;         // something chosen is not so after all
    std::function<void()> openingsEnded;   // no file is being opened any more
    std::function<void()> loggingChanged;  // somebody has switched the log
  };

  Session(GDBusConnection* bus, Observer observer);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  [[nodiscard]] const StoreList& Stores() const { return stores_; }
  [[nodiscard]] const StoreLocations& Locations() const { return locations_; }

  // Asks the agent for its list, and starts it where it has ended.
  void Reload();
  // Absolute paths; an empty one is a file that is not on this computer.
  void OpenFiles(const std::vector<std::string>& paths);
  [[nodiscard]] bool IsOpening() const { return !openings_.empty() || askedToOpen_ > 0; }
  void Remove(const Store& store);
  void ChooseGateway(const std::string& storeID, const std::string& gatewayName);
  void AnnounceLogging() { agent_.AnnounceLogging(); }

 private:
  [[nodiscard]] AgentConnection::Observer AgentObserver();
  void TakeStores(const std::optional<std::vector<Store>>& stores, const std::string& problem);
  void TakeState(SavedState state);
  void AskForState();
  void EndReload(const Overview& overview);
  void Show(const Overview& overview);
  void OpenFile(const std::string& path);
  void NoteFinished(const Finished& finished);
  void NoteAgentWent();
  void Tell(Notice notice);
  void NoteOpeningsEnded();
  void Refuse(const std::string& sentence, const std::string& problem);

  const Observer observer_;
  StoreList stores_;
  AgentConnection agent_;
  const StoreLocations locations_;
  Overview overview_;
  bool isReloading_ = false;
  bool isStale_ = false;  // something changed while the list was on its way
  unsigned askedToOpen_ = 0;
  bool hasToldOfOpenings_ = false;                 // of those that are under way
  std::map<std::uint64_t, std::string> openings_;  // the names of the files, by the openings' numbers
  guint retry_ = 0;
};

}  // namespace Stores
