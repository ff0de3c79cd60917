#include "view/StoreDetailsView.h"

#include "Shared/Translations.h"
#include "Shared/Widgets.h"
#include "libs/PropertyList/PropertyList.h"
#include "view/StoreFacts.h"
#include "view/StoreView.h"

#include <optional>

namespace Dialogs {

using namespace Windows;

namespace {

constexpr int kBetweenNameAndRest = 18;

GtkWidget* MakeNamedStoreView(const StoreFacts& facts) {
  GtkWidget* const view = gtk_box_new(GTK_ORIENTATION_VERTICAL, kBetweenNameAndRest);
  GtkWidget* const name = Widgets::MakeWrappingLabel(facts.name);
  gtk_widget_add_css_class(name, "title-2");
  gtk_box_append(GTK_BOX(view), name);
  gtk_box_append(GTK_BOX(view), MakeStoreView(facts));
  return view;
}

GtkWidget* ViewOf(const char* details) {
  if (details == nullptr || gtk_is_initialized() == FALSE) return nullptr;
  const std::optional<PropertyList::Value> root = PropertyList::Read(details);
  const auto* dictionary = root ? root->As<PropertyList::Dictionary>() : nullptr;
  if (dictionary == nullptr) return nullptr;
  Translations::LieIn(SR_CATALOGUES, reinterpret_cast<const void*>(&ServiceRecordUIStoreDetailsView));
  return MakeNamedStoreView(StoreFacts::Of(*dictionary));
}

}  // namespace
}  // namespace Dialogs

void* ServiceRecordUIStoreDetailsView(const char* details) {
  try {
    return Dialogs::ViewOf(details);
  } catch (...) {
    return nullptr;
  }
}
