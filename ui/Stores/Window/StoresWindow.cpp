#include "Window/StoresWindow.h"

#include "Model/OutcomeSentences.h"
#include "Shared/ShownText.h"
#include "Shared/Signals.h"
#include "Shared/Translations.h"
#include "Shared/Widgets.h"
#include "Window/SignalArguments.h"
#include "Window/StoreRow.h"

#include <algorithm>
#include <utility>

namespace Stores {

using namespace Windows;

namespace {

std::string WithoutCase(const std::string& text) {
  return Taken(g_utf8_casefold(text.c_str(), -1));
}

std::vector<std::string> PathsOf(GSList* files) {
  std::vector<std::string> paths;
  for (; files != nullptr; files = files->next) paths.push_back(Taken(g_file_get_path(G_FILE(files->data))));
  return paths;
}

const char* NameOf(Overview::Page page) {
  switch (page) {
    case Overview::Page::Loading:
      break;
    case Overview::Page::Empty:
      return "empty";
    case Overview::Page::Stores:
      return "stores";
    case Overview::Page::Unreachable:
      return "unreachable";
    case Overview::Page::Unreadable:
      return "unreadable";
  }
  return "loading";
}

const char* SentenceOf(Overview::Warning warning) {
  switch (warning) {
    case Overview::Warning::None:
      break;
    case Overview::Warning::Unsaved:
      return Translated(
          "The list could not be saved. The background service goes on with it and tries again, but what was "
          "not saved is "
          "lost "
          "when it ends. The system log says why.");
    case Overview::Warning::AgentEnded:
      return Translated("The background service has ended. What is shown may be out of date.");
  }
  return nullptr;
}

GtkMessageType KindOf(const std::vector<Notice>& notices) {
  const bool areGood =
      std::all_of(notices.begin(), notices.end(), [](const Notice& notice) { return notice.isGood; });
  return areGood ? GTK_MESSAGE_INFO : GTK_MESSAGE_WARNING;
}

}  // namespace

StoresWindow::StoresWindow(GtkApplication* application, const Parts& parts)
    : parts_(parts), details_(parts.details) {
  gtk_window_set_application(Widget(), application);
  adw_bin_set_child(interface_.Get<AdwBin>("detailsPage"), details_.Widget());
  NameControls();
  SetUpSearch();
  SetUpList();
  SetUpPages();
  AcceptFiles();
  AcceptClosing();
}

StoresWindow::~StoresWindow() {
  gtk_window_destroy(Widget());
}

void StoresWindow::Present() {
  gtk_window_present(Widget());
}

void StoresWindow::NameControls() {
  Widgets::SetAccessibleName(interface_.Get("back"), Translated("Back"));
  Widgets::SetAccessibleName(interface_.Get("add"), Translated("Add from file"));
  // The button is a part of the toolkit's, which has its own name in some releases and that part's in others.
  GtkWidget* const menu = interface_.Get("menuButton");
  for (GtkWidget* const named : {menu, gtk_widget_get_first_child(menu)})
    Widgets::SetAccessibleName(named, Translated("Menu"));
  GtkPopover* const items = gtk_menu_button_get_popover(GTK_MENU_BUTTON(menu));
  Signals::Connect(items, "map", [items] { Widgets::NameMenuItems(GTK_WIDGET(items)); });
  Widgets::SetAccessibleName(interface_.Get("list"), Translated("Stores"));
  Widgets::SetAccessibleName(interface_.Get("search"), Translated("Search stores"));
  Widgets::SetAccessibleName(interface_.Get("loading"), Translated("Asking for your stores"));
}

void StoresWindow::SetUpSearch() {
  const auto matches = [](gpointer item, gpointer self) -> gboolean {
    return static_cast<StoresWindow*>(self)->Matches(SR_STORE_ITEM(item));
  };
  filter_.reset(GTK_FILTER(gtk_custom_filter_new(+matches, this, nullptr)));
  Signals::Connect(interface_.Get("search"), "search-changed", [this] {
    searched_ = WithoutCase(gtk_editable_get_text(interface_.Get<GtkEditable>("search")));
    gtk_filter_changed(filter_.get(), GTK_FILTER_CHANGE_DIFFERENT);
  });
}

bool StoresWindow::Matches(StoreItem* item) const {
  if (searched_.empty()) return true;
  const Store& store = StoreOf(item);
  const std::string text = ShownText::Name(store.name) + '\n' + ShownText::ServerOf(store.url);
  return WithoutCase(text).find(searched_) != std::string::npos;
}

void StoresWindow::SetUpList() {
  auto* const list = interface_.Get<GtkListView>("list");
  GtkFilterListModel* const filtered =
      gtk_filter_list_model_new(Shared(parts_.stores).release(), Shared(filter_.get()).release());
  ConnectWith<guint, guint, guint>(filtered, "items-changed", [this, filtered](guint, guint, guint) {
    const bool isEmpty = g_list_model_get_n_items(G_LIST_MODEL(filtered)) == 0;
    gtk_stack_set_visible_child_name(interface_.Get<GtkStack>("found"), isEmpty ? "none" : "some");
  });
  selection_.reset(gtk_single_selection_new(G_LIST_MODEL(filtered)));
  gtk_list_view_set_model(list, GTK_SELECTION_MODEL(selection_.get()));
  gtk_list_view_set_factory(list, StoreRow::MakeFactory(parts_.wantLocation).get());
  Signals::ConnectChange(selection_.get(), "selected-item", [this] { NoteChoice(); });
  ConnectWith<guint>(list, "activate", [this](guint /*position*/) { ShowDetailsPage(); });
  GtkGesture* const click = gtk_gesture_click_new();
  ConnectWith<int, double, double>(click, "released", [this](int, double, double) { ShowDetailsPage(); });
  gtk_widget_add_controller(GTK_WIDGET(list), GTK_EVENT_CONTROLLER(click));
}

void StoresWindow::SetUpPages() {
  auto* const leaflet = interface_.Get<AdwLeaflet>("leaflet");
  Signals::ConnectChange(leaflet, "folded", [this] { NoteFolding(); });
  Signals::ConnectChange(leaflet, "visible-child", [this] { NoteFolding(); });
  Signals::Connect(interface_.Get("back"), "clicked", [this] { ShowListPage(); });
  for (const char* const button : {"retry", "restart"}) {
    Signals::Connect(interface_.Get(button), "clicked", [this] { parts_.retry(); });
  }
  Signals::Connect(interface_.Get("closeNotice"), "clicked",
                   [this] { gtk_widget_set_visible(interface_.Get("noticeBar"), FALSE); });
  NoteFolding();
}

void StoresWindow::AcceptFiles() {
  GtkDropTarget* const target = gtk_drop_target_new(GDK_TYPE_FILE_LIST, GDK_ACTION_COPY);
  const auto drop = [](GtkDropTarget*, const GValue* value, double, double, gpointer self) -> gboolean {
    static_cast<StoresWindow*>(self)->parts_.openFiles(
        PathsOf(static_cast<GSList*>(g_value_get_boxed(value))));
    return TRUE;
  };
  g_signal_connect(target, "drop", G_CALLBACK(+drop), this);
  gtk_widget_add_controller(GTK_WIDGET(Widget()), GTK_EVENT_CONTROLLER(target));
}

void StoresWindow::AcceptClosing() {
  const auto close = [](GtkWindow* window, gpointer self) -> gboolean {
    if (static_cast<StoresWindow*>(self)->parts_.mayClose()) return FALSE;
    gtk_widget_set_visible(GTK_WIDGET(window), FALSE);
    return TRUE;
  };
  g_signal_connect(Widget(), "close-request", G_CALLBACK(+close), this);
}

void StoresWindow::NoteChoice() {
  StoreItem* const item = Chosen();
  if (item != nullptr) {
    parts_.wantLocation(item);
    details_.SetItem(item);
  }
  gtk_widget_set_visible(details_.Widget(), item != nullptr);
  parts_.storeChosen();
}

StoreItem* StoresWindow::Chosen() const {
  gpointer const item = gtk_single_selection_get_selected_item(selection_.get());
  return item != nullptr ? SR_STORE_ITEM(item) : nullptr;
}

void StoresWindow::NoteFolding() {
  auto* const leaflet = interface_.Get<AdwLeaflet>("leaflet");
  const bool isOnDetails = adw_leaflet_get_visible_child(leaflet) == interface_.Get("detailsPage");
  const bool hidesList = adw_leaflet_get_folded(leaflet) && isOnDetails;
  gtk_widget_set_visible(interface_.Get("back"), hidesList);
  gtk_widget_set_visible(interface_.Get("add"), !hidesList);
}

void StoresWindow::ShowDetailsPage() {
  if (Chosen() == nullptr) return;
  adw_leaflet_set_visible_child(interface_.Get<AdwLeaflet>("leaflet"), interface_.Get("detailsPage"));
}

void StoresWindow::ShowListPage() {
  adw_leaflet_set_visible_child(interface_.Get<AdwLeaflet>("leaflet"), interface_.Get("listPage"));
  gtk_widget_grab_focus(interface_.Get("list"));
}

void StoresWindow::ShowOverview(const Overview& overview) {
  const TextPtr escaped(g_markup_escape_text(ShownText::Lines(overview.problem).c_str(), -1));
  adw_status_page_set_description(interface_.Get<AdwStatusPage>("unreachable"), escaped.get());
  gtk_stack_set_visible_child_name(interface_.Get<GtkStack>("pages"), NameOf(overview.page));
  const char* const warning = SentenceOf(overview.warning);
  gtk_widget_set_visible(interface_.Get("restart"), overview.warning == Overview::Warning::AgentEnded);
  if (warning == nullptr) return gtk_widget_set_visible(interface_.Get("stateBar"), FALSE);
  ShowBar("stateBar", "stateText", warning);
}

void StoresWindow::ShowNotice(const Notice& notice) {
  if (!notice.isFurther || gtk_widget_get_visible(interface_.Get("noticeBar")) == FALSE) notices_.clear();
  notices_.push_back(notice);
  gtk_info_bar_set_message_type(interface_.Get<GtkInfoBar>("noticeBar"), KindOf(notices_));
  ShowBar("noticeBar", "noticeText", OutcomeSentences::OfAll(notices_));
}

// The focus stays where it is: assistive technologies are told of an alert by its name, so that comes first.
void StoresWindow::ShowBar(const char* bar, const char* label, const std::string& text) const {
  gtk_label_set_text(interface_.Get<GtkLabel>(label), text.c_str());
  Widgets::SetAccessibleName(interface_.Get(bar), text);
  gtk_widget_set_visible(interface_.Get(bar), TRUE);
}

void StoresWindow::Show(StoreItem* item) {
  gtk_editable_set_text(interface_.Get<GtkEditable>("search"), "");
  searched_.clear();
  gtk_filter_changed(filter_.get(), GTK_FILTER_CHANGE_DIFFERENT);
  GListModel* const shown = G_LIST_MODEL(selection_.get());
  for (guint position = 0; position < g_list_model_get_n_items(shown); ++position) {
    const ObjectPtr<GObject> candidate(g_list_model_get_object(shown, position));
    if (SR_STORE_ITEM(candidate.get()) != item) continue;
    gtk_single_selection_set_selected(selection_.get(), position);
    gtk_widget_activate_action(interface_.Get("list"), "list.scroll-to-item", "u", position);
    ShowDetailsPage();
    return;
  }
}

}  // namespace Stores
