#pragma once

#include "libs/Display/DisplayVariables.h"
#include "libs/Files/EventFd.h"
#include "libs/ThreadSafety/ThreadSafety.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace Dialogs {

class DialogConversation;
class DialogProgram;

// The error messages of one opening, which gather in one box of a dialog program. One thread keeps it; the
// messages come from any.
class ErrorBox {
 public:
  // Very many would bury what they say.
  static constexpr std::size_t kMostMessages = 32;

  // Shown on that desktop, or on this process's where that cannot be. `termination` is only polled.
  ErrorBox(Display::Variables desktop, int termination)
      : desktop_(std::move(desktop)), termination_(termination) {}

  enum class Adding { Taken, Full, Closed };
  // `details` is the dictionary of an error dialog.
  [[nodiscard]] Adding Add(std::string details);

  // Shows the messages until the user has closed the box and none is left, or termination is requested. What
  // no program can show goes to the system log. Closed from then on.
  void Keep() noexcept;
  [[nodiscard]] bool IsClosed();

 private:
  // Closes the box when nothing is left to show.
  [[nodiscard]] bool IsDone();
  // False when no program showed any of what is left.
  [[nodiscard]] bool ShowMessages();
  [[nodiscard]] bool ShowBy(const DialogProgram& program);
  // Says to the program what it has not been told; the first `said` messages need not be.
  void SayMore(DialogConversation& conversation, std::size_t& said);
  [[nodiscard]] std::size_t Shown();
  void CountShown();
  [[nodiscard]] bool IsTerminating() const;
  [[nodiscard]] std::vector<std::string> Close();

  const Display::Variables desktop_;
  int termination_;
  Files::EventFd news_;  // a message has come
  ThreadSafety::Mutex mutex_;
  std::vector<std::string> messages_ SR_GUARDED_BY(mutex_);
  std::size_t shown_ SR_GUARDED_BY(mutex_) = 0;  // the first ones
  bool isClosed_ SR_GUARDED_BY(mutex_) = false;
};

}  // namespace Dialogs
