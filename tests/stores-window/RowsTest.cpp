#include "Shared/Owners.h"
#include "Window/Rows.h"
#include "support/VirtualScreen.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <string>
#include <vector>

namespace {

using TestSupport::VirtualScreen;
using namespace Windows;

using ::testing::Each;
using ::testing::SizeIs;

void Collect(GtkWidget* widget, std::vector<GtkLabel*>& labels) {
  if (GTK_IS_LABEL(widget) && *gtk_label_get_text(GTK_LABEL(widget)) != '\0') {
    labels.push_back(GTK_LABEL(widget));
  }
  for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    Collect(child, labels);
  }
}

// What stands in the attributes of each label of the row that shows something.
std::vector<std::string> AttributesOf(AdwActionRow* row) {
  std::vector<GtkLabel*> labels;
  Collect(GTK_WIDGET(row), labels);
  std::vector<std::string> attributes;
  for (GtkLabel* const label : labels) {
    PangoAttrList* const list = gtk_label_get_attributes(label);
    const TextPtr text(list != nullptr ? pango_attr_list_to_string(list) : nullptr);
    attributes.emplace_back(text ? text.get() : "");
  }
  return attributes;
}

TEST(RowsTest, NoTextOfARowGetsHyphensThatAreNotItsOwn) {
  const VirtualScreen screen;
  screen.ShowOwnWindows();
  ASSERT_NE(gtk_init_check(), FALSE);
  adw_init();

  AdwActionRow* const row = Stores::Rows::Make("Address", "https://store.example");
  g_object_ref_sink(row);
  const ObjectPtr<AdwActionRow> owned(row);
  Stores::Rows::SetTexts(row, "Address", "https://other.example");
  EXPECT_THAT(AttributesOf(row), SizeIs(2));
  EXPECT_THAT(AttributesOf(row), Each("0 4294967295 insert-hyphens false"));
}

}  // namespace
