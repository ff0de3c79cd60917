#pragma once

#include "libs/CredentialWire/CredentialMessage.h"
#include "libs/PropertyList/PropertyList.h"
#include "window/QuestionWindow.h"

#include <string>
#include <string_view>

namespace Dialogs {

// Asks for what a server wants for a log-on. What is typed stays in memory that the toolkit wipes.
class LogOnWindow : public QuestionWindow {
 public:
  LogOnWindow(const PropertyList::Dictionary& details, const std::function<void(bool accepted)>& onAnswer);

  // What was typed.
  [[nodiscard]] CredentialWire::CredentialMessage Answer() const;

 private:
  [[nodiscard]] std::string_view TextOf(const char* row) const;
  // Looks whether there is what is needed.
  void Look();
  void ShowHint(const std::string& hint);

  bool needsPassword_ = true;
  bool needsCode_ = false;
  std::string hint_;  // while all that was typed can be sent
};

}  // namespace Dialogs
