#include "StoresApplication.h"

#include "Agent/LoggingSetting.h"
#include "Shared/Signals.h"
#include "Shared/Translations.h"
#include "Window/FileChoice.h"
#include "Window/RemoveQuestion.h"
#include "Window/SignalArguments.h"
#include "libs/Bus/ServiceNames.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace Stores {

using namespace Windows;

namespace {

std::string CheckProgram() {
  std::error_code ignored;
  return std::filesystem::read_symlink("/proc/self/exe", ignored).replace_filename("srctl").string();
}

void SetKeys(GtkApplication* application, const char* action, const char* keys) {
  const char* const all[]{keys, nullptr};
  gtk_application_set_accels_for_action(application, action, all);
}

}  // namespace

StoresApplication::StoresApplication()
    : application_(adw_application_new(Bus::ServiceNames::kStoresWindow, G_APPLICATION_DEFAULT_FLAGS)) {
  Signals::Connect(application_.get(), "startup", [this] { AddActions(); });
  Signals::Connect(application_.get(), "activate", [this] { Present(); });
  Signals::Connect(application_.get(), "shutdown", [this] { End(); });
}

StoresApplication::~StoresApplication() = default;

int StoresApplication::Run(int argc, char** argv) {
  return g_application_run(G_APPLICATION(application_.get()), argc, argv);
}

void StoresApplication::AddAction(const char* name, const std::function<void()>& activated) {
  const ObjectPtr<GSimpleAction> action(g_simple_action_new(name, nullptr));
  ConnectWith<GVariant*>(action.get(), "activate", [activated](GVariant* /*parameter*/) { activated(); });
  g_action_map_add_action(G_ACTION_MAP(application_.get()), G_ACTION(action.get()));
}

void StoresApplication::AddActions() {
  AddAction("add", [this] { AddFromFile(); });
  AddAction("remove", [this] { RemoveChosen(); });
  AddAction("quit", [this] {
    if (window_) gtk_window_close(window_->Widget());
  });
  AddShowStore();
  AddLog();
  g_simple_action_set_enabled(Action("remove"), FALSE);
  GtkApplication* const application = GTK_APPLICATION(application_.get());
  SetKeys(application, "app.add", "<Control>o");
  SetKeys(application, "app.quit", "<Control>q");
  SetKeys(application, "window.close", "<Control>w");
}

void StoresApplication::AddShowStore() {
  const ObjectPtr<GSimpleAction> action(
      g_simple_action_new(Bus::ServiceNames::kShowStoreAction, G_VARIANT_TYPE_STRING));
  ConnectWith<GVariant*>(action.get(), "activate",
                         [this](GVariant* id) { ShowStore(g_variant_get_string(id, nullptr)); });
  g_action_map_add_action(G_ACTION_MAP(application_.get()), G_ACTION(action.get()));
}

void StoresApplication::AddLog() {
  const ObjectPtr<GSimpleAction> action(
      g_simple_action_new_stateful("log", nullptr, g_variant_new_boolean(LoggingSetting::IsOn())));
  ConnectWith<GVariant*>(action.get(), "change-state",
                         [this](GVariant* on) { SwitchLog(g_variant_get_boolean(on) != FALSE); });
  g_action_map_add_action(G_ACTION_MAP(application_.get()), G_ACTION(action.get()));
}

GSimpleAction* StoresApplication::Action(const char* name) const {
  return G_SIMPLE_ACTION(g_action_map_lookup_action(G_ACTION_MAP(application_.get()), name));
}

void StoresApplication::Present() {
  if (!window_) {
    MakeSession();
    MakeWindow();
  }
  window_->Present();
}

void StoresApplication::MakeSession() {
  GDBusConnection* const bus = g_application_get_dbus_connection(G_APPLICATION(application_.get()));
  if (bus == nullptr) return;
  session_ =
      std::make_unique<Session>(bus, Session::Observer{.show =
                                                           [this](const Overview& overview) {
                                                             window_->ShowOverview(overview);
                                                             NoteChoice();
                                                           },
                                                       .reloaded = [this] { ShowWantedStore(); },
                                                       .note = [this](const Notice& notice) { Note(notice); },
                                                       .refused = [this] { window_->RefreshDetails(); },
                                                       .openingsEnded = [this] { NoteOpeningsEnded(); },
                                                       .loggingChanged = [this] { ReadLog(); }});
}

void StoresApplication::MakeWindow() {
  const StoresWindow::Parts parts{
      .stores = (session_ ? session_->Stores() : noStores_).Model(),
      .details = {.checkProgram = CheckProgram(),
                  .chooseGateway =
                      [this](const std::string& storeID, const std::string& gatewayName) {
                        session_->ChooseGateway(storeID, gatewayName);
                      }},
      .wantLocation = [this](StoreItem* item) { session_->Locations().Want(item); },
      .openFiles = [this](const std::vector<std::string>& paths) { Open(paths); },
      .retry =
          [this] {
            if (session_) session_->Reload();
          },
      .mayClose = [this] { return !session_ || !session_->IsOpening(); },
      .storeChosen = [this] { NoteChoice(); }};
  window_ = std::make_unique<StoresWindow>(GTK_APPLICATION(application_.get()), parts);
  if (session_) {
    session_->Reload();
  } else {
    g_simple_action_set_enabled(Action("add"), FALSE);
    window_->ShowOverview({Overview::Page::Unreachable, Overview::Warning::None,
                           Translated("There is no session bus. Start this program in a desktop session.")});
  }
}

// What is still on its way has nobody to arrive at.
void StoresApplication::End() {
  g_cancellable_cancel(ended_.get());
  window_.reset();
  session_.reset();
}

void StoresApplication::ShowStore(const std::string& id) {
  wantedStore_ = id;
  Present();
  ShowWantedStore();
}

void StoresApplication::ShowWantedStore() {
  StoreItem* const item = session_ ? session_->Stores().Find(wantedStore_) : nullptr;
  if (item == nullptr) return;
  wantedStore_.clear();
  window_->Show(item);
}

void StoresApplication::Note(const Notice& notice) {
  window_->ShowNotice(notice);
  if (notice.storeID.empty()) return;
  wantedStore_ = notice.storeID;
  ShowWantedStore();
}

void StoresApplication::Open(const std::vector<std::string>& paths) {
  if (session_) session_->OpenFiles(paths);
}

void StoresApplication::AddFromFile() {
  Present();
  ChooseFiles(window_->Widget(), [this](const std::vector<std::string>& paths) { Open(paths); });
}

void StoresApplication::RemoveChosen() {
  StoreItem* const item = window_ ? window_->Chosen() : nullptr;
  if (item == nullptr) return;
  const Store store = StoreOf(item);
  AskWhetherToRemove(window_->Widget(), store.name, [this, store] { session_->Remove(store); });
}

void StoresApplication::SwitchLog(bool on) {
  LoggingSetting::Set(on, ended_.get(), [this](bool saved) {
    ReadLog();
    if (saved && session_) session_->AnnounceLogging();
    if (!saved && window_) window_->ShowNotice({Translated("The setting of the log could not be saved.")});
  });
}

void StoresApplication::ReadLog() {
  g_simple_action_set_state(Action("log"), g_variant_new_boolean(LoggingSetting::IsOn()));
}

void StoresApplication::NoteChoice() {
  const bool canRemove = window_ && window_->Chosen() != nullptr;
  g_simple_action_set_enabled(Action("remove"), canRemove);
}

// The window was closed while the agent was asking about a file.
void StoresApplication::NoteOpeningsEnded() {
  if (!gtk_widget_get_visible(GTK_WIDGET(window_->Widget()))) gtk_window_destroy(window_->Widget());
}

}  // namespace Stores
