#pragma once

#include "libs/PropertyList/PropertyList.h"
#include "window/QuestionWindow.h"

namespace Dialogs {

// Whether a new store is trusted.
class TrustWindow : public QuestionWindow {
 public:
  TrustWindow(const PropertyList::Dictionary& details, const std::function<void(bool accepted)>& onAnswer);
};

}  // namespace Dialogs
