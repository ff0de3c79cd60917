#include "Window/RemoveQuestion.h"

#include "Shared/ShownText.h"
#include "Shared/Translations.h"
#include "Shared/Widgets.h"
#include "Window/SignalArguments.h"

#include <string_view>

namespace Stores {

using namespace Windows;

namespace {

// The toolkit gives its own buttons their name twice.
void NameButtonsOnce(GtkWidget* widget) {
  if (GTK_IS_BUTTON(widget)) return Widgets::NameByLabel(widget);
  for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    NameButtonsOnce(child);
  }
}

}  // namespace

void AskWhetherToRemove(GtkWindow* parent, const std::string& storeName,
                        const std::function<void()>& remove) {
  const std::string heading =
      ShownText::Sentence(Translated("Remove “{store}”?"), {{"store", ShownText::Name(storeName)}});
  AdwMessageDialog* const dialog = ADW_MESSAGE_DIALOG(adw_message_dialog_new(
      parent, heading.c_str(),
      Translated(
          "Its applications cannot be found any more. To get the store back, open its service-record file "
          "again.")));
  adw_message_dialog_add_responses(dialog, "cancel", Translated("_Cancel"), "remove", Translated("_Remove"),
                                   nullptr);
  adw_message_dialog_set_response_appearance(dialog, "remove", ADW_RESPONSE_DESTRUCTIVE);
  adw_message_dialog_set_default_response(dialog, "cancel");
  adw_message_dialog_set_close_response(dialog, "cancel");
  ConnectWith<const char*>(dialog, "response", [remove](const char* response) {
    if (std::string_view(response) == "remove") remove();
  });
  NameButtonsOnce(GTK_WIDGET(dialog));
  gtk_window_present(GTK_WINDOW(dialog));
}

}  // namespace Stores
