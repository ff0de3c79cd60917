#include "window/TrustWindow.h"

#include "Shared/ShownText.h"
#include "Shared/Translations.h"
#include "view/StoreFacts.h"
#include "view/StoreView.h"

namespace Dialogs {

using namespace Windows;

namespace {

std::string HeadingFor(const std::string& name) {
  if (name.empty()) return Translated("Add this store?");
  return ShownText::Sentence(Translated("Add “{store}”?"), {{"store", name}});
}

}  // namespace

TrustWindow::TrustWindow(const PropertyList::Dictionary& details,
                         const std::function<void(bool accepted)>& onAnswer)
    : QuestionWindow("/com/morvane/ServiceRecords/dialogs/trust.ui", onAnswer) {
  const StoreFacts facts = StoreFacts::Of(details);
  gtk_label_set_text(Get<GtkLabel>("heading"), HeadingFor(facts.name).c_str());
  GtkBox* const content = Get<GtkBox>("content");
  gtk_box_append(content, MakeStoreView(facts));
  AppendFile(content, details);
}

}  // namespace Dialogs
