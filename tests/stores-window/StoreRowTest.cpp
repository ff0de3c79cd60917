#include "Window/StoreRow.h"
#include "stores-window/WidgetTest.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using Stores::MakeStoreItem;
using Stores::StoreItem;
using Windows::ObjectPtr;

using testing::SizeIs;

class StoreRowTest : public TestSupport::WidgetTest {
 protected:
  void Show(const Stores::Store& store) {
    g_list_store_append(stores_.get(), MakeStoreItem(store).get());
    Present(gtk_list_view_new(
        GTK_SELECTION_MODEL(gtk_no_selection_new(Windows::Shared(G_LIST_MODEL(stores_.get())).release())),
        Stores::StoreRow::MakeFactory([](StoreItem*) {}).release()));
  }

 private:
  const ObjectPtr<GListStore> stores_{g_list_store_new(G_TYPE_OBJECT)};
};

// Two servers of one host are told apart.
TEST_F(StoreRowTest, APortThatIsNotTheUsualOneIsShown) {
  Show({"s1", "One", "https://one.example:8443/x", {}});
  EXPECT_THAT(All([](GtkWidget* widget) {
                return GTK_IS_LABEL(widget) != FALSE &&
                       g_strcmp0(gtk_label_get_text(GTK_LABEL(widget)), "one.example:8443") == 0;
              }),
              SizeIs(1));
}

TEST_F(StoreRowTest, ANameThatIsCutIsWholeInItsTooltip) {
  const std::string name(120, 'n');
  Show({"s1", name, "https://one.example", {}});
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
