#pragma once

#include "Model/Overview.h"
#include "Model/StoreItem.h"
#include "Shared/Interface.h"
#include "Window/StoreDetails.h"

#include <functional>
#include <string>
#include <vector>

namespace Stores {

// The window: the list of the stores, beside it (or, where it is narrow, in place of it) what there is to
// know of the chosen one, and above both what there is to say.
class StoresWindow {
 public:
  struct Parts {
    GListModel* stores;  // of StoreItem
    StoreDetails::Parts details;
    std::function<void(StoreItem*)> wantLocation;
    std::function<void(const std::vector<std::string>& paths)> openFiles;
    std::function<void()> retry;
    std::function<bool()> mayClose;  // else the window is only hidden
    std::function<void()> storeChosen;
  };

  StoresWindow(GtkApplication* application, const Parts& parts);
  ~StoresWindow();
  StoresWindow(const StoresWindow&) = delete;
  StoresWindow& operator=(const StoresWindow&) = delete;

  void Present();
  [[nodiscard]] GtkWindow* Widget() const { return interface_.Get<GtkWindow>("window"); }

  void ShowOverview(const Overview& overview);
  // Something that has just happened, until the user closes it or something else happens; below what it is
  // further to.
  void ShowNotice(const Notice& notice);

  // Chooses that store and shows it, also where the window is narrow.
  void Show(StoreItem* item);
  // The chosen store; null for none.
  [[nodiscard]] StoreItem* Chosen() const;
  void RefreshDetails() { details_.Refresh(); }

 private:
  void NameControls();
  void SetUpList();
  void SetUpSearch();
  void SetUpPages();
  void AcceptFiles();
  void AcceptClosing();
  void NoteChoice();
  void NoteFolding();
  void ShowDetailsPage();
  void ShowListPage();
  void ShowBar(const char* bar, const char* label, const std::string& text) const;
  [[nodiscard]] bool Matches(StoreItem* item) const;

  const Windows::Interface interface_{"/com/morvane/ServiceRecords/Stores/stores-window.ui"};
  const Parts parts_;
  StoreDetails details_;
  Windows::ObjectPtr<GtkFilter> filter_;
  Windows::ObjectPtr<GtkSingleSelection> selection_;
  std::string searched_;         // without letter case
  std::vector<Notice> notices_;  // those that are shown
};

}  // namespace Stores
