#pragma once

#include "Agent/StoreCheck.h"
#include "Shared/Adwaita.h"
#include "Shared/Interface.h"

#include <memory>
#include <string>
#include <vector>

namespace Stores {

// The check of the store that is shown: a button that begins and stops it, and what it found.
class CheckView {
 public:
  // `interface`: of the details, which outlives this object. `program`: the path of srctl.
  CheckView(const Windows::Interface& interface, std::string program);

  // Forgets what was found about another store.
  void SetStore(const std::string& id);

 private:
  void Toggle();
  void Stop();
  void Take(const CheckFinding& finding);
  void TakeEnd(CheckEnd end);
  void AddRow(const std::string& title, const std::string& text, const char* icon, const char* word);
  void ShowRunning(bool running);

  AdwPreferencesGroup* const group_;
  GtkWidget* const spinner_;
  GtkLabel* const label_;
  const std::string program_;
  std::string storeID_;
  std::vector<AdwActionRow*> rows_;
  std::unique_ptr<StoreCheck> check_;
};

}  // namespace Stores
