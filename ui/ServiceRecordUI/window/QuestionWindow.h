#pragma once

#include "libs/PropertyList/PropertyList.h"
#include "window/DialogWindow.h"

#include <functional>

namespace Dialogs {

// A question with the buttons "accept" and "decline". For its first half second it takes no key and cannot be
// accepted, so that nothing meant for another window answers it. One thread.
class QuestionWindow : public DialogWindow {
 public:
  QuestionWindow(const char* interface, const std::function<void(bool accepted)>& onAnswer);

 protected:
  // Which file the question comes from, when that is known.
  static void AppendFile(GtkBox* content, const PropertyList::Dictionary& details);
  // Whether there is all that it takes to accept; there is from the start.
  void SetComplete(bool isComplete);

 private:
  void Arm();
  void Look();

  bool isArmed_ = false;
  bool isComplete_ = true;
};

}  // namespace Dialogs
