#include "window/QuestionWindow.h"

#include "Shared/ShownText.h"
#include "Shared/Signals.h"
#include "Shared/Translations.h"
#include "Shared/Widgets.h"
#include "request/Details.h"
#include "view/StoreView.h"

#include <utility>

namespace Dialogs {

using namespace Windows;

namespace {

constexpr unsigned kUnansweredMilliseconds = 500;

}  // namespace

QuestionWindow::QuestionWindow(const char* interface, const std::function<void(bool accepted)>& onAnswer)
    : DialogWindow(interface, [onAnswer] { onAnswer(false); }) {
  for (const char* const button : {"decline", "accept"}) Widgets::NameByLabel(Get(button));
  Signals::Connect(Get("decline"), "clicked", [this] { Close(); });
  Signals::Connect(Get("accept"), "clicked", [onAnswer] { onAnswer(true); });
  TrapKeys();
  Signals::Connect(Get("window"), "map", [this] { Disarm(); });
  // A busy machine draws it late.
  Signals::Connect(Get("window"), "realize", [this] {
    Signals::Connect(gtk_widget_get_frame_clock(Get("window")), "after-paint", [this] { NoteFrame(); });
  });
}

void QuestionWindow::AppendFile(GtkBox* content, const PropertyList::Dictionary& details) {
  const std::string file = ShownText::Whole(Details::Text(details, "DocumentPath"));
  if (file.empty()) return;
  gtk_box_append(content, MakeFactGroup(Translated("Service record"), {{Translated("File"), file}}));
}

// Keys go to nobody until it is armed.
void QuestionWindow::TrapKeys() {
  GtkEventController* const trap = gtk_event_controller_key_new();
  gtk_event_controller_set_propagation_phase(trap, GTK_PHASE_CAPTURE);
  Signals::ConnectAnswered(trap, "key-pressed", [this] { return !isArmed_; });
  gtk_widget_add_controller(Get("window"), trap);
}

void QuestionWindow::Disarm() {
  isArmed_ = false;
  isAwaitingFrame_ = true;
  ++timesShown_;
  Look();
}

void QuestionWindow::NoteFrame() {
  if (!std::exchange(isAwaitingFrame_, false)) return;
  Signals::After(kUnansweredMilliseconds, [this, time = timesShown_] {
    if (time != timesShown_) return;
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
