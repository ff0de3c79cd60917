#include "view/StoreView.h"

#include "Shared/Translations.h"
#include "Shared/Widgets.h"

namespace Dialogs {

using namespace Windows;

namespace {

constexpr int kBetweenGroups = 18;
constexpr int kBetweenLines = 6;

GtkWidget* MakeStyledLabel(const std::string& text, const char* style) {
  GtkWidget* const label = Widgets::MakeWrappingLabel(text);
  gtk_widget_add_css_class(label, style);
  return label;
}

GtkWidget* MakeHost(const StoreFacts& facts) {
  GtkWidget* const lines = gtk_box_new(GTK_ORIENTATION_VERTICAL, kBetweenLines);
  gtk_box_append(GTK_BOX(lines), MakeStyledLabel(facts.host, "title-1"));
  if (!facts.hostASCII.empty()) {
    gtk_box_append(GTK_BOX(lines), MakeStyledLabel(facts.hostASCII, "monospace"));
  }
  if (!facts.address.empty()) {
    gtk_box_append(GTK_BOX(lines), Widgets::MakeWrappingLabel(facts.address));
  }
  return lines;
}

}  // namespace

GtkWidget* MakeFactList(const char* name, const std::vector<Fact>& facts) {
  GtkWidget* const list = gtk_list_box_new();
  gtk_list_box_set_selection_mode(GTK_LIST_BOX(list), GTK_SELECTION_NONE);
  gtk_widget_add_css_class(list, "boxed-list");
  for (const Fact& fact : facts) {
    gtk_list_box_append(GTK_LIST_BOX(list), Widgets::MakePropertyRow(fact.caption, fact.value));
  }
  Widgets::SetAccessibleName(list, name);
  return list;
}

GtkWidget* MakeFactGroup(const char* heading, const std::vector<Fact>& facts) {
  GtkWidget* const group = gtk_box_new(GTK_ORIENTATION_VERTICAL, kBetweenLines);
  gtk_box_append(GTK_BOX(group), MakeStyledLabel(heading, "heading"));
  gtk_box_append(GTK_BOX(group), MakeFactList(heading, facts));
  return group;
}

GtkWidget* MakeStoreView(const StoreFacts& facts) {
  GtkWidget* const view = gtk_box_new(GTK_ORIENTATION_VERTICAL, kBetweenGroups);
  if (!facts.host.empty()) gtk_box_append(GTK_BOX(view), MakeHost(facts));
  if (!facts.verified.empty()) {
    gtk_box_append(GTK_BOX(view), MakeFactGroup(Translated("Verified server"), facts.verified));
  }
  if (!facts.gateways.empty()) {
    gtk_box_append(GTK_BOX(view), MakeFactGroup(Translated("Gateways"), facts.gateways));
  }
  return view;
}

}  // namespace Dialogs
