#pragma once

#include "libs/PropertyList/PropertyList.h"
#include "window/DialogWindow.h"

#include <functional>
#include <string>

namespace Dialogs {

// The error messages of one opening, one below the other. One thread.
class ErrorWindow : public DialogWindow {
 public:
  // `onClosed` comes when what was copied is safe, too.
  explicit ErrorWindow(const PropertyList::Dictionary& details, std::function<void()> onClosed);

  void Add(const PropertyList::Dictionary& details);

 private:
  void Copy();

  std::string copied_;  // what "Copy details" copies
};

}  // namespace Dialogs
