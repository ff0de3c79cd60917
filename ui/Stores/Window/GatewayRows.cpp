#include "Window/GatewayRows.h"

#include "Shared/ShownText.h"
#include "Shared/Signals.h"
#include "Shared/Widgets.h"
#include "Window/Rows.h"

#include <algorithm>
#include <utility>

namespace Stores {

using namespace Windows;

namespace {

bool IsSame(const Gateway& left, const Gateway& right) {
  return left.name == right.name && left.url == right.url;
}

}  // namespace

GatewayRows::GatewayRows(const Interface& interface, Choose choose)
    : group_(interface.Get<AdwPreferencesGroup>("gateways")),
      none_(interface.Get<GtkCheckButton>("noGateway")),
      choose_(std::move(choose)) {}

void GatewayRows::Show(const std::vector<Gateway>& gateways) {
  gtk_widget_set_visible(GTK_WIDGET(group_), !gateways.empty());
  isFilling_ = true;
  // Rows that stay keep the focus.
  if (!std::equal(gateways.begin(), gateways.end(), shown_.begin(), shown_.end(), IsSame)) Fill(gateways);
  for (std::size_t index = 0; index < gateways.size(); ++index) {
    gtk_check_button_set_active(buttons_[index], gateways[index].isDefault);
  }
  isFilling_ = false;
}

void GatewayRows::Fill(const std::vector<Gateway>& gateways) {
  Clear();
  for (const Gateway& gateway : gateways) Add(gateway);
  shown_ = gateways;
}

void GatewayRows::Clear() {
  for (AdwActionRow* row : rows_) adw_preferences_group_remove(group_, GTK_WIDGET(row));
  rows_.clear();
  buttons_.clear();
}

void GatewayRows::Add(const Gateway& gateway) {
  const std::string name = ShownText::Name(gateway.name);
  AdwActionRow* const row = Rows::Make(name, ShownText::Whole(gateway.url));
  GtkWidget* const button =
      GTK_WIDGET(g_object_new(GTK_TYPE_CHECK_BUTTON, "accessible-role", GTK_ACCESSIBLE_ROLE_RADIO, nullptr));
  gtk_check_button_set_group(GTK_CHECK_BUTTON(button), none_);
  gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
  adw_action_row_add_prefix(row, button);
  adw_action_row_set_activatable_widget(row, button);
  Widgets::SetAccessibleName(button, name);  // after the row, which makes itself the button's label
  Signals::Connect(button, "toggled", [this, button, gatewayName = gateway.name] {
    if (!isFilling_ && gtk_check_button_get_active(GTK_CHECK_BUTTON(button))) choose_(gatewayName);
  });
  adw_preferences_group_add(group_, GTK_WIDGET(row));
  rows_.push_back(row);
  buttons_.push_back(GTK_CHECK_BUTTON(button));
}

}  // namespace Stores
