#pragma once

#include "Shared/Gtk.h"
#include "view/StoreFacts.h"

namespace Dialogs {

// A widget that tells what is known of a store, without its name: its host large, which server was verified
// and whose it is, and the gateways. Floating. Needs nothing but GTK.
[[nodiscard]] GtkWidget* MakeStoreView(const StoreFacts& facts);

// The facts as rows of a list of that name.
[[nodiscard]] GtkWidget* MakeFactList(const char* name, const std::vector<Fact>& facts);
// A heading and below it the facts as rows; the heading is the list's name.
[[nodiscard]] GtkWidget* MakeFactGroup(const char* heading, const std::vector<Fact>& facts);

}  // namespace Dialogs
