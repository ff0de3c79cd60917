#include "window/ReplaceWindow.h"

#include "Shared/ShownText.h"
#include "Shared/Translations.h"
#include "Shared/Widgets.h"
#include "view/StoreChanges.h"
#include "view/StoreView.h"

namespace Dialogs {

using namespace Windows;

namespace {

std::string HeadingFor(const std::string& name) {
  if (name.empty()) return Translated("Replace this store?");
  return ShownText::Sentence(Translated("Replace “{store}”?"), {{"store", name}});
}

void AppendChanges(GtkBox* content, const StoreChanges& changes) {
  if (!changes.held.empty()) {
    gtk_box_append(content, MakeFactGroup(Translated("The store that you have"), changes.held));
  }
  if (!changes.changes.empty()) {
    gtk_box_append(content, MakeFactGroup(Translated("What the new record changes"), changes.changes));
  } else if (changes.isKnown) {
    gtk_box_append(content, Widgets::MakeWrappingLabel(
                                Translated("Name, address, gateways and beacons stay the same.")));
  }
}

}  // namespace

ReplaceWindow::ReplaceWindow(const PropertyList::Dictionary& details,
                             const std::function<void(bool accepted)>& onAnswer)
    : QuestionWindow("/com/morvane/ServiceRecords/dialogs/replace.ui", onAnswer) {
  const StoreChanges changes = StoreChanges::Of(details);
  gtk_label_set_text(Get<GtkLabel>("heading"), HeadingFor(changes.name).c_str());
  AppendChanges(Get<GtkBox>("content"), changes);
  AppendFile(Get<GtkBox>("content"), details);
}

}  // namespace Dialogs
