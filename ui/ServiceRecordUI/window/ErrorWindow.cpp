#include "window/ErrorWindow.h"

#include "Shared/Signals.h"
#include "Shared/Translations.h"
#include "Shared/Widgets.h"
#include "view/ErrorText.h"
#include "view/StoreView.h"

#include <memory>
#include <utility>
#include <vector>

namespace Dialogs {

using namespace Windows;

namespace {

constexpr int kBetweenLines = 12;
constexpr unsigned kLongestHandOverMilliseconds = 3000;

using Action = std::function<void()>;

void AppendLabel(GtkBox* box, const std::string& text, const char* style) {
  if (text.empty()) return;
  GtkWidget* const label = Widgets::MakeWrappingLabel(text);
  gtk_widget_add_css_class(label, style);
  gtk_box_append(box, label);
}

GtkWidget* MakeMessage(const ErrorText& text) {
  GtkWidget* const message = gtk_box_new(GTK_ORIENTATION_VERTICAL, kBetweenLines);
  AppendLabel(GTK_BOX(message), text.title, "title-2");
  AppendLabel(GTK_BOX(message), text.message, "body");
  AppendLabel(GTK_BOX(message), text.reason, "body");
  std::vector<Fact> concerned;
  if (!text.store.empty()) concerned.push_back({Translated("Store"), text.store});
  if (!text.server.empty()) concerned.push_back({Translated("Server"), text.server});
  if (!concerned.empty())
    gtk_box_append(GTK_BOX(message), MakeFactList(Translated("What it is about"), concerned));
  return message;
}

void Finish(GObject* clipboard, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<Action> onDone(static_cast<Action*>(data));
  gdk_clipboard_store_finish(GDK_CLIPBOARD(clipboard), result, nullptr);
  (*onDone)();
}

// What a program has copied goes with it, unless the desktop takes it over first. One that hangs does not
// keep the program.
void HandOverClipboard(GtkWidget* window, Action onDone) {
  Signals::After(kLongestHandOverMilliseconds, onDone);
  gdk_clipboard_store_async(gtk_widget_get_clipboard(window), G_PRIORITY_DEFAULT, nullptr, Finish,
                            std::make_unique<Action>(std::move(onDone)).release());
}

}  // namespace

ErrorWindow::ErrorWindow(const PropertyList::Dictionary& details, std::function<void()> onOver)
    : DialogWindow("/com/morvane/ServiceRecords/dialogs/error.ui", [this, onOver = std::move(onOver)] {
        if (std::exchange(isClosed_, true)) return;
        gtk_widget_set_visible(Get("window"), FALSE);
        HandOverClipboard(Get("window"), onOver);
      }) {
  Widgets::NameByLabel(Get("close"));
  Signals::Connect(Get("close"), "clicked", [this] { Close(); });
  Signals::Connect(Get("copy"), "clicked", [this] { Copy(); });
  const std::string file = ErrorText::Of(details).file;
  if (!file.empty()) {
    gtk_box_append(Get<GtkBox>("content"),
                   MakeFactGroup(Translated("Service record"), {{Translated("File"), file}}));
  }
  Add(details);
}

void ErrorWindow::Add(const PropertyList::Dictionary& details) {
  const ErrorText text = ErrorText::Of(details);
  gtk_box_append(Get<GtkBox>("messages"), MakeMessage(text));
  if (!copied_.empty()) copied_ += '\n';
  copied_ += text.ForCopying();
  LabelCopy(Translated("C_opy details"));
  FitHeight();
}

void ErrorWindow::Copy() {
  gdk_clipboard_set_text(gtk_widget_get_clipboard(Get("window")), copied_.c_str());
  LabelCopy(Translated("C_opied"));
}

void ErrorWindow::LabelCopy(const char* text) const {
  gtk_label_set_label(Get<GtkLabel>("copyLabel"), text);
  Widgets::NameByLabel(Get("copy"));
}

}  // namespace Dialogs
