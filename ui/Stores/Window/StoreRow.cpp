#include "Window/StoreRow.h"

#include "Model/LocationWords.h"
#include "Shared/Interface.h"
#include "Shared/ShownText.h"
#include "Shared/Widgets.h"
#include "Window/SignalArguments.h"

namespace Stores::StoreRow {

using namespace Windows;

namespace {

constexpr char kRowKey[] = "servicerecords-row";

// The widgets of one row, which shows one item after the other.
class Row {
 public:
  explicit Row(GtkListItem* holder) : holder_(holder) {
    gtk_list_item_set_child(holder, interface_.Get("row"));
  }
  ~Row() { Unbind(); }
  Row(const Row&) = delete;
  Row& operator=(const Row&) = delete;

  void Bind(const Shown& shown) {
    item_ = Shared(SR_STORE_ITEM(gtk_list_item_get_item(holder_)));
    shown_ = shown;
    changed_ =
        g_signal_connect_swapped(item_.get(), "changed", G_CALLBACK(+[](Row* row) { row->Show(); }), this);
    Show();
  }

  void Unbind() {
    if (item_) g_signal_handler_disconnect(item_.get(), changed_);
    item_.reset();
  }

 private:
  void Show() {
    const Store& store = StoreOf(item_.get());
    const std::string name = ShownText::Name(store.name);
    const std::string host = ShownText::ServerOf(store.url);
    const auto& location = LocationOf(item_.get());
    const LocationWords::Words words = LocationWords::Of(location);
    gtk_label_set_text(interface_.Get<GtkLabel>("name"), name.c_str());
    gtk_widget_set_tooltip_text(interface_.Get("name"), name.c_str());
    gtk_label_set_text(interface_.Get<GtkLabel>("host"), host.c_str());
    gtk_label_set_text(interface_.Get<GtkLabel>("location"), words.sentence);
    gtk_image_set_from_icon_name(interface_.Get<GtkImage>("icon"), words.icon);
    // What has the focus is the list's own widget around the row.
    GtkWidget* const focused = gtk_widget_get_parent(interface_.Get("row"));
    if (focused != nullptr) {
      Widgets::SetAccessibleName(focused, name);
      Widgets::SetAccessibleDescription(focused, ShownText::Isolated(host) + ", " + words.sentence);
    }
    shown_(item_.get());
  }

  GtkListItem* const holder_;
  const Interface interface_{"/com/morvane/ServiceRecords/Stores/store-row.ui"};
  ObjectPtr<StoreItem> item_;
  Shown shown_;
  gulong changed_ = 0;
};

Row* RowOf(GtkListItem* holder) {
  return static_cast<Row*>(g_object_get_data(G_OBJECT(holder), kRowKey));
}

}  // namespace

ObjectPtr<GtkListItemFactory> MakeFactory(const Shown& shown) {
  ObjectPtr<GtkListItemFactory> factory(gtk_signal_list_item_factory_new());
  ConnectWith<GtkListItem*>(factory.get(), "setup", [](GtkListItem* holder) {
    g_object_set_data_full(G_OBJECT(holder), kRowKey, std::make_unique<Row>(holder).release(),
                           [](gpointer row) { delete static_cast<Row*>(row); });
  });
  ConnectWith<GtkListItem*>(factory.get(), "bind",
                            [shown](GtkListItem* holder) { RowOf(holder)->Bind(shown); });
  ConnectWith<GtkListItem*>(factory.get(), "unbind", [](GtkListItem* holder) { RowOf(holder)->Unbind(); });
  return factory;
}

}  // namespace Stores::StoreRow
