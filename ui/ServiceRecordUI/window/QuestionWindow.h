#pragma once

#include "libs/PropertyList/PropertyList.h"
#include "window/DialogWindow.h"

#include <functional>

namespace Dialogs {

// A question with the buttons "accept" and "decline". For the first half second that it can be seen it takes
// no key and cannot be accepted, so that nothing meant for another window answers it. One thread.
class QuestionWindow : public DialogWindow {
 public:
  QuestionWindow(const char* interface, const std::function<void(bool accepted)>& onAnswer);

 protected:
  // Which file the question comes from, when that is known.
  static void AppendFile(GtkBox* content, const PropertyList::Dictionary& details);
  // Whether there is all that it takes to accept; there is from the start.
  void SetComplete(bool isComplete);

 private:
  void TrapKeys();
  void Disarm();
  void NoteFrame();
  void Look();

  bool isArmed_ = false;
  bool isAwaitingFrame_ = false;  // the first since it was shown
  unsigned timesShown_ = 0;
  bool isComplete_ = true;
};

}  // namespace Dialogs
