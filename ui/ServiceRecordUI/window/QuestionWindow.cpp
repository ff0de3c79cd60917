#include "window/QuestionWindow.h"

#include "Shared/ShownText.h"
#include "Shared/Signals.h"
#include "Shared/Translations.h"
#include "Shared/Widgets.h"
#include "request/Details.h"
#include "view/StoreView.h"

namespace Dialogs {

namespace {

constexpr unsigned kUnansweredMilliseconds = 500;

// Keys go to nobody as long as it is there.
GtkEventController* MakeKeyTrap() {
  GtkEventController* const trap = gtk_event_controller_key_new();
  gtk_event_controller_set_propagation_phase(trap, GTK_PHASE_CAPTURE);
  Signals::ConnectAnswered(trap, "key-pressed", [] { return true; });
  return trap;
}

}  // namespace

QuestionWindow::QuestionWindow(const char* interface, const std::function<void(bool accepted)>& onAnswer)
    : DialogWindow(interface, [onAnswer] { onAnswer(false); }) {
  for (const char* const button : {"decline", "accept"}) Widgets::NameByLabel(Get(button));
  Signals::Connect(Get("decline"), "clicked", [this] { Close(); });
  Signals::Connect(Get("accept"), "clicked", [onAnswer] { onAnswer(true); });
  Signals::Connect(Get("window"), "map", [this] { Arm(); });
}

void QuestionWindow::AppendFile(GtkBox* content, const PropertyList::Dictionary& details) {
  const std::string file = ShownText::Whole(Details::Text(details, "DocumentPath"));
  if (file.empty()) return;
  gtk_box_append(content, MakeFactGroup(Translated("Service record"), {{Translated("File"), file}}));
}

void QuestionWindow::Arm() {
  GtkEventController* const trap = MakeKeyTrap();
  gtk_widget_add_controller(Get("window"), trap);
  Signals::After(kUnansweredMilliseconds, [this, trap] {
    gtk_widget_remove_controller(Get("window"), trap);
    isArmed_ = true;
    Look();
  });
}

void QuestionWindow::SetComplete(bool isComplete) {
  isComplete_ = isComplete;
  Look();
}

void QuestionWindow::Look() {
  gtk_widget_set_sensitive(Get("accept"), static_cast<gboolean>(isArmed_ && isComplete_));
}

}  // namespace Dialogs
