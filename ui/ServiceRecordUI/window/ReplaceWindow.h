#pragma once

#include "libs/PropertyList/PropertyList.h"
#include "window/QuestionWindow.h"

namespace Dialogs {

// Whether a store that is held is replaced.
class ReplaceWindow : public QuestionWindow {
 public:
  ReplaceWindow(const PropertyList::Dictionary& details, const std::function<void(bool accepted)>& onAnswer);
};

}  // namespace Dialogs
