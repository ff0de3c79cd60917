#pragma once

#include "Shared/Gtk.h"

#include <string>

// Pieces of our windows. Texts are shown as they are: what somebody else wrote comes here by ShownText.
namespace Windows::Widgets {

// The one name, and the description, by which assistive technologies know the widget.
void SetAccessibleName(GtkWidget* widget, const std::string& name);
// The name of a button whose child is a label: the label's text, without its mnemonic's mark.
void NameByLabel(GtkWidget* button);
// Names each item of the menu by its label, which not every release of the toolkit does.
void NameMenuItems(GtkWidget* menu);
void SetAccessibleDescription(GtkWidget* widget, const std::string& description);

// A label that wraps anywhere, without hyphens of its own: of a host its end is always there.
[[nodiscard]] GtkWidget* MakeWrappingLabel(const std::string& text);
// Makes such a label of one that stands in an interface.
void Wrap(GtkLabel* label);
// Takes their hyphens from all labels that the widget holds.
void InsertNoHyphens(GtkWidget* widget);

// A row for a boxed list: what the value is, and below it the value.
[[nodiscard]] GtkWidget* MakePropertyRow(const std::string& caption, const std::string& value);

}  // namespace Windows::Widgets
