#include "Window/Rows.h"

#include "Shared/Widgets.h"

namespace Stores::Rows {

using namespace Windows;

void SetTexts(AdwActionRow* row, const std::string& title, const std::string& subtitle) {
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), title.c_str());
  adw_action_row_set_subtitle(row, subtitle.c_str());
  Widgets::SetAccessibleDescription(GTK_WIDGET(row), subtitle);
  // A host with a hyphen that is not its own is another host.
  Widgets::InsertNoHyphens(GTK_WIDGET(row));
}

AdwActionRow* Make(const std::string& title, const std::string& subtitle) {
  AdwActionRow* const row = ADW_ACTION_ROW(adw_action_row_new());
  adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
  SetTexts(row, title, subtitle);
  return row;
}

GtkWidget* MakeIcon(const char* name) {
  return GTK_WIDGET(g_object_new(GTK_TYPE_IMAGE, "accessible-role", GTK_ACCESSIBLE_ROLE_PRESENTATION,
                                 "icon-name", name, nullptr));
}

}  // namespace Stores::Rows
