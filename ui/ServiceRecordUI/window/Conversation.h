#pragma once

#include "libs/DialogWire/DialogWire.h"
#include "request/DialogRequest.h"

#include <functional>
#include <string_view>

namespace Dialogs {

// The program's side of the conversation with whoever started it, and the main loop around it. One thread.
class Conversation {
 public:
  // Calls `onRequest` with each further request, and `onEnd` when nobody wants an answer any more: the input
  // has closed, or the system asks the program to end.
  void Watch(std::function<void(DialogRequest)> onRequest, std::function<void()> onEnd);

  void Reply(DialogWire::Reply reply);
  // Lines behind the reply.
  void Write(std::string_view lines);

  // False when something could not be written.
  [[nodiscard]] bool IsWritten() const { return isWritten_; }

  // Runs the main loop until End.
  void Run() const;
  void End() { isOver_ = true; }
  [[nodiscard]] bool IsOver() const { return isOver_; }

 private:
  bool isOver_ = false;
  bool isWritten_ = true;
};

}  // namespace Dialogs
