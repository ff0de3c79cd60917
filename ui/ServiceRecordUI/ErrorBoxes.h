#pragma once

#include "libs/Display/DisplayVariables.h"
#include "libs/ThreadSafety/ThreadSafety.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Dialogs {

class ErrorBox;

// The error boxes that are open, one for each opening. There are only a few at a time, so that many bad
// documents bury neither the user's screen nor the machine under them; further messages go to the system log.
// Any thread.
class ErrorBoxes {
 public:
  static constexpr std::size_t kMostOpen = 4;

  [[nodiscard]] static ErrorBoxes& Instance();

  // Shows the message with the details of an error dialog, in the box of its opening or in one of its own.
  // Returns without waiting for the user. `desktop` and `termination` as for ErrorBox; an open box stays
  // where it is.
  void Show(const std::string& details, const Display::Variables& desktop, int termination);

 private:
  // Nothing for a message that belongs to no opening.
  using Opening = std::optional<std::uint64_t>;
  struct Open {
    Opening opening;
    std::shared_ptr<ErrorBox> box;
  };

  // False when the opening has no box that is open, and there is no place for another one.
  [[nodiscard]] bool Take(const Opening& opening, const std::string& details,
                          const Display::Variables& desktop, int termination);
  [[nodiscard]] ErrorBox* BoxOf(const Opening& opening) SR_REQUIRES(mutex_);

  ThreadSafety::Mutex mutex_;
  std::vector<Open> open_ SR_GUARDED_BY(mutex_);
};

}  // namespace Dialogs
