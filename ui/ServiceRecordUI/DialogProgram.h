#pragma once

#include "DialogConversation.h"
#include "libs/Display/DisplayVariables.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Dialogs {

// A program beside the module that can show a dialog.
class DialogProgram {
 public:
  // Those that may show it, the best one first: the one on that terminal, when one is given; else the one
  // with a window, on that desktop and then on this process's, as far as there are any, and then the one that
  // looks for a terminal itself.
  [[nodiscard]] static std::vector<DialogProgram> For(int terminal, const Display::Variables& desktop);

  // Starts it for that request; the interruptions are descriptors that are only polled. Nothing when it
  // cannot be started.
  [[nodiscard]] std::optional<DialogConversation> Begin(std::string request, int interruption,
                                                        int furtherInterruption) const;

 private:
  DialogProgram(const char* name, int terminal, Display::Variables desktop)
      : name_(name), terminal_(terminal), desktop_(std::move(desktop)) {}

  const char* name_;
  int terminal_;
  Display::Variables desktop_;
};

}  // namespace Dialogs
