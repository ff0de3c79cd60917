#include "Shared/Widgets.h"

#include "libs/Lifetime/UniqueHandle.h"

#include <sstream>

namespace Windows::Widgets {
namespace {

using AttributesPtr = Lifetime::UniqueHandle<PangoAttrList, pango_attr_list_unref>;

constexpr int kRowMargin = 12;
constexpr int kRowEdge = 8;
constexpr int kBetweenLines = 3;

void SetAccessibleText(GtkWidget* widget, GtkAccessibleProperty property, const std::string& text) {
  gtk_accessible_update_property(GTK_ACCESSIBLE(widget), property, text.c_str(), -1);
}

GtkWidget* MakeCaption(const std::string& caption) {
  GtkWidget* const label = MakeWrappingLabel(caption);
  gtk_widget_add_css_class(label, "dim-label");
  gtk_widget_add_css_class(label, "caption");
  return label;
}

void InsertNoHyphensInto(GtkLabel* label) {
  PangoAttrList* const set = gtk_label_get_attributes(label);
  const AttributesPtr attributes(set != nullptr ? pango_attr_list_copy(set) : pango_attr_list_new());
  pango_attr_list_change(attributes.get(), pango_attr_insert_hyphens_new(FALSE));
  gtk_label_set_attributes(label, attributes.get());
}

// Each line for itself, so that it begins where its own direction does.
void AppendLines(GtkBox* box, const std::string& text) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) gtk_box_append(box, MakeWrappingLabel(line));
}

bool IsMenuItem(GtkWidget* widget) {
  const GtkAccessibleRole role = gtk_accessible_get_accessible_role(GTK_ACCESSIBLE(widget));
  return role == GTK_ACCESSIBLE_ROLE_MENU_ITEM || role == GTK_ACCESSIBLE_ROLE_MENU_ITEM_CHECKBOX ||
         role == GTK_ACCESSIBLE_ROLE_MENU_ITEM_RADIO;
}

// Of the labels in the widget, without its mnemonic's mark.
std::string FirstTextIn(GtkWidget* widget) {
  std::string text = GTK_IS_LABEL(widget) ? gtk_label_get_text(GTK_LABEL(widget)) : "";
  for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr && text.empty();
       child = gtk_widget_get_next_sibling(child)) {
    text = FirstTextIn(child);
  }
  return text;
}

}  // namespace

void SetAccessibleName(GtkWidget* widget, const std::string& name) {
  // The relation would make a second name of what the widget holds.
  gtk_accessible_reset_relation(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_RELATION_LABELLED_BY);
  SetAccessibleText(widget, GTK_ACCESSIBLE_PROPERTY_LABEL, name);
}

void NameByLabel(GtkWidget* button) {
  SetAccessibleName(button, gtk_label_get_text(GTK_LABEL(gtk_button_get_child(GTK_BUTTON(button)))));
}

void NameMenuItems(GtkWidget* menu) {
  if (IsMenuItem(menu)) return SetAccessibleName(menu, FirstTextIn(menu));
  for (GtkWidget* child = gtk_widget_get_first_child(menu); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    NameMenuItems(child);
  }
}

void SetAccessibleDescription(GtkWidget* widget, const std::string& description) {
  SetAccessibleText(widget, GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, description);
}

void Wrap(GtkLabel* label) {
  gtk_label_set_wrap(label, TRUE);
  gtk_label_set_wrap_mode(label, PANGO_WRAP_WORD_CHAR);
  InsertNoHyphensInto(label);
}

void InsertNoHyphens(GtkWidget* widget) {
  if (GTK_IS_LABEL(widget)) InsertNoHyphensInto(GTK_LABEL(widget));
  for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    InsertNoHyphens(child);
  }
}

GtkWidget* MakeWrappingLabel(const std::string& text) {
  GtkWidget* const label = gtk_label_new(text.c_str());
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  Wrap(GTK_LABEL(label));
  return label;
}

GtkWidget* MakePropertyRow(const std::string& caption, const std::string& value) {
  GtkWidget* const lines = gtk_box_new(GTK_ORIENTATION_VERTICAL, kBetweenLines);
  gtk_widget_set_margin_start(lines, kRowMargin);
  gtk_widget_set_margin_end(lines, kRowMargin);
  gtk_widget_set_margin_top(lines, kRowEdge);
  gtk_widget_set_margin_bottom(lines, kRowEdge);
  gtk_box_append(GTK_BOX(lines), MakeCaption(caption));
  AppendLines(GTK_BOX(lines), value);

  GtkWidget* const row = gtk_list_box_row_new();
  gtk_list_box_row_set_activatable(GTK_LIST_BOX_ROW(row), FALSE);
  gtk_list_box_row_set_selectable(GTK_LIST_BOX_ROW(row), FALSE);
  gtk_list_box_row_set_child(GTK_LIST_BOX_ROW(row), lines);
  SetAccessibleName(row, caption);
  SetAccessibleDescription(row, value);
  return row;
}

}  // namespace Windows::Widgets
