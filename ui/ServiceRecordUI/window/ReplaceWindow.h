#pragma once

#include "libs/PropertyList/PropertyList.h"
#include "window/QuestionWindow.h"

// Whether a store that is held is replaced.
class ReplaceWindow : public QuestionWindow {
 public:
  ReplaceWindow(const PropertyList::Dictionary& details, std::function<void(bool accepted)> onAnswer);
};
