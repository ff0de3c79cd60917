#include "Window/StoreRow.h"
#include "stores-window/WidgetTest.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using Stores::MakeStoreItem;
using Stores::StoreItem;
using Windows::ObjectPtr;

using testing::SizeIs;

using StoreRowTest = TestSupport::WidgetTest;

TEST_F(StoreRowTest, ANameThatIsCutIsWholeInItsTooltip) {
  const std::string name(120, 'n');
  const ObjectPtr<GListStore> stores(g_list_store_new(G_TYPE_OBJECT));
  g_list_store_append(stores.get(), MakeStoreItem({"s1", name, "https://one.example", {}}).get());
  Present(gtk_list_view_new(
      GTK_SELECTION_MODEL(gtk_no_selection_new(Windows::Shared(G_LIST_MODEL(stores.get())).release())),
      Stores::StoreRow::MakeFactory([](StoreItem*) {}).release()));
  const auto names = All([](GtkWidget* widget) {
    return GTK_IS_LABEL(widget) && gtk_widget_has_css_class(widget, "heading") != FALSE;
  });
  ASSERT_THAT(names, SizeIs(1));
  PangoLayout* const layout = gtk_label_get_layout(GTK_LABEL(names[0]));
  EXPECT_EQ(pango_layout_get_line_count(layout), 2);
  EXPECT_NE(pango_layout_is_ellipsized(layout), FALSE);
  EXPECT_STREQ(gtk_widget_get_tooltip_text(names[0]), name.c_str());
}

}  // namespace
