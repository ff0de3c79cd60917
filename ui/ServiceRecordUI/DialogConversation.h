#pragma once

#include "libs/DialogWire/DialogWire.h"
#include "libs/HelperProgram/HelperConversation.h"

#include <optional>
#include <string>

// One dialog: the request goes out, the reply comes in. Belongs to the thread that runs it.
class DialogConversation {
 public:
  // The descriptors are only polled.
  DialogConversation(HelperProcess program, std::string request, int termination, int withdrawal);

  // Blocks until the program has replied. Nothing when it ended, closed its output or said anything but one
  // of the replies, and when termination was requested or the question withdrawn first.
  [[nodiscard]] std::optional<DialogWire::Reply> AwaitReply();

  // Blocks until the program has ended or is no longer wanted; what it says does not matter.
  void AwaitEnd();

 private:
  // Reads what is there now, up to the longest reply.
  void Read();

  HelperConversation conversation_;
  std::string request_;
  std::string reply_;
};
