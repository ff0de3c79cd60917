#include "Shared/Widgets.h"
#include "libs/Lifetime/UniqueHandle.h"
#include "ui/DialogWindowTest.h"

// How labels show hosts.
namespace {

using namespace Windows;

using WidgetsTest = DialogWindowTest;

bool InsertsHyphens(GtkLabel* label) {
  PangoAttrList* const attributes = gtk_label_get_attributes(label);
  if (attributes == nullptr) return true;
  const Lifetime::UniqueHandle<PangoAttrIterator, pango_attr_iterator_destroy> first(
      pango_attr_list_get_iterator(attributes));
  const PangoAttribute* const hyphens = pango_attr_iterator_get(first.get(), PANGO_ATTR_INSERT_HYPHENS);
  return hyphens == nullptr || reinterpret_cast<const PangoAttrInt*>(hyphens)->value != FALSE;
}

void ExpectToShowAllOfAHost(GtkLabel* label) {
  EXPECT_NE(gtk_label_get_wrap(label), FALSE);
  EXPECT_EQ(gtk_label_get_wrap_mode(label), PANGO_WRAP_WORD_CHAR);
  EXPECT_EQ(gtk_label_get_ellipsize(label), PANGO_ELLIPSIZE_NONE);
  EXPECT_EQ(gtk_label_get_lines(label), -1);
  EXPECT_FALSE(InsertsHyphens(label));
}

TEST_F(WidgetsTest, AWrappingLabelShowsAllOfAHostWithoutHyphensOfItsOwn) {
  GtkWidget* const label = Widgets::MakeWrappingLabel("stores-of-another-department.example");
  g_object_ref_sink(label);
  ExpectToShowAllOfAHost(GTK_LABEL(label));
  g_object_unref(label);
}

TEST_F(WidgetsTest, ALabelOfAnInterfaceCanBecomeOneAndKeepsItsLook) {
  GtkWidget* const label = gtk_label_new("stores.example");
  g_object_ref_sink(label);
  const Lifetime::UniqueHandle<PangoAttrList, pango_attr_list_unref> look(pango_attr_list_new());
  pango_attr_list_insert(look.get(), pango_attr_weight_new(PANGO_WEIGHT_BOLD));
  gtk_label_set_attributes(GTK_LABEL(label), look.get());

  Widgets::Wrap(GTK_LABEL(label));

  ExpectToShowAllOfAHost(GTK_LABEL(label));
  const Lifetime::UniqueHandle<PangoAttrIterator, pango_attr_iterator_destroy> first(
      pango_attr_list_get_iterator(gtk_label_get_attributes(GTK_LABEL(label))));
  EXPECT_NE(pango_attr_iterator_get(first.get(), PANGO_ATTR_WEIGHT), nullptr);
  g_object_unref(label);
}

}  // namespace
