#pragma once

#include "Agent/GLibHandles.h"
#include "Session.h"
#include "Shared/Adwaita.h"
#include "Window/StoresWindow.h"

#include <memory>
#include <string>

namespace Stores {

// The program: one window for each user's session, which the desktop or another program brings forward.
class StoresApplication {
 public:
  StoresApplication();
  ~StoresApplication();
  StoresApplication(const StoresApplication&) = delete;
  StoresApplication& operator=(const StoresApplication&) = delete;

  // Returns the exit status.
  [[nodiscard]] int Run(int argc, char** argv);

 private:
  void AddActions();
  void AddAction(const char* name, const std::function<void()>& activated);
  void AddShowStore();
  void AddLog();
  void Present();
  void MakeSession();
  void MakeWindow();
  void End();
  void ShowStore(const std::string& id);
  void ShowWantedStore();
  void Note(const Notice& notice);
  void Open(const std::vector<std::string>& paths);
  void AddFromFile();
  void RemoveChosen();
  void SwitchLog(bool on);
  void ReadLog();
  void NoteChoice();
  void NoteOpeningsEnded();
  [[nodiscard]] GSimpleAction* Action(const char* name) const;

  const Windows::ObjectPtr<AdwApplication> application_;
  const Windows::ObjectPtr<GCancellable> ended_{g_cancellable_new()};
  std::unique_ptr<Session> session_;  // null without a session bus
  std::unique_ptr<StoresWindow> window_;
  const StoreList noStores_;
  std::string wantedStore_;  // to be shown once it is in the list
};

}  // namespace Stores
