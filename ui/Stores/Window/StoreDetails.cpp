#include "Window/StoreDetails.h"

#include "Model/LocationWords.h"
#include "Shared/ShownMessage.h"
#include "Shared/ShownText.h"
#include "Shared/Translations.h"
#include "Window/Rows.h"

namespace Stores {

using namespace Windows;

StoreDetails::StoreDetails(const Parts& parts)
    : gateways_(interface_,
                [this, choose = parts.chooseGateway](const std::string& gatewayName) {
                  choose(StoreOf(item_.get()).id, gatewayName);
                }),
      check_(interface_, parts.checkProgram) {}

StoreDetails::~StoreDetails() {
  Forget();
}

void StoreDetails::SetItem(StoreItem* item) {
  if (item == item_.get()) return;
  Forget();
  item_ = Shared(item);
  const auto show = [](StoreDetails* self) { self->Show(); };
  changed_ = g_signal_connect_swapped(item, "changed", G_CALLBACK(+show), this);
  check_.SetStore(StoreOf(item).id);
  Show();
  Begin();
}

void StoreDetails::Refresh() {
  if (item_) gateways_.Show(StoreOf(item_.get()).gateways);
}

void StoreDetails::Forget() {
  if (item_) g_signal_handler_disconnect(item_.get(), changed_);
  item_.reset();
}

void StoreDetails::Show() {
  const Store& store = StoreOf(item_.get());
  gtk_label_set_text(interface_.Get<GtkLabel>("name"), ShownText::Name(store.name).c_str());
  gtk_label_set_text(interface_.Get<GtkLabel>("host"), ShownText::ServerOf(store.url).c_str());
  Rows::SetTexts(interface_.Get<AdwActionRow>("address"), Translated("Address"), ShownText::Whole(store.url));
  Rows::SetTexts(interface_.Get<AdwActionRow>("identifier"), Translated("Identifier"),
                 ShownText::Whole(store.id));
  gateways_.Show(store.gateways);
  ShowLocation();
}

// What had the focus would act on another store than the one it was chosen for.
void StoreDetails::Begin() {
  GtkRoot* const root = gtk_widget_get_root(Widget());
  GtkWidget* const focused = root != nullptr ? gtk_root_get_focus(root) : nullptr;
  if (focused != nullptr && gtk_widget_is_ancestor(focused, Widget()) != FALSE) {
    gtk_widget_grab_focus(interface_.Get("location"));
  }
  gtk_adjustment_set_value(gtk_scrolled_window_get_vadjustment(interface_.Get<GtkScrolledWindow>("details")),
                           0);
}

void StoreDetails::ShowLocation() {
  const auto& location = LocationOf(item_.get());
  const LocationWords::Words words = LocationWords::Of(location);
  Rows::SetTexts(interface_.Get<AdwActionRow>("location"), words.sentence,
                 location ? ShownMessage(location->reason) : std::string());
  gtk_image_set_from_icon_name(interface_.Get<GtkImage>("locationIcon"), words.icon);
}

}  // namespace Stores
