#pragma once

#include "libs/PropertyList/PropertyList.h"
#include "window/DialogWindow.h"

#include <functional>
#include <string>

namespace Dialogs {

// The error messages of one opening, one below the other. One thread.
class ErrorWindow : public DialogWindow {
 public:
  // `onOver` comes once the window is closed and what was copied is safe, or has not been taken over for
  // three seconds; it may come twice.
  explicit ErrorWindow(const PropertyList::Dictionary& details, std::function<void()> onOver);

  void Add(const PropertyList::Dictionary& details);
  // Nobody sees any more what is added.
  [[nodiscard]] bool IsClosed() const { return isClosed_; }

 private:
  void Copy();
  // The text, with a mnemonic, of the button that copies.
  void LabelCopy(const char* text) const;

  bool isClosed_ = false;
  std::string copied_;  // what "Copy details" copies
};

}  // namespace Dialogs
