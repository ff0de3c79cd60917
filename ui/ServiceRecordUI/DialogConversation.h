#pragma once

#include "libs/DialogWire/DialogWire.h"
#include "libs/HelperProgram/HelperConversation.h"

#include <optional>
#include <string>
#include <string_view>

namespace Dialogs {

// What is said to one dialog program: requests go out, replies come in. Belongs to the thread that runs it.
class DialogConversation {
 public:
  // The interruptions are descriptors that are only polled.
  DialogConversation(HelperProgram::HelperProcess program, std::string request, int interruption,
                     int furtherInterruption);

  // Blocks until the program has replied to its first request that has no reply yet. Nothing when it ended,
  // closed its output or said anything but one of the replies, and when an interruption came first.
  [[nodiscard]] std::optional<DialogWire::Reply> AwaitReply();

  // One more request to the program.
  void Append(std::string_view request) { request_ += request; }
  // The program will say nothing more that counts.
  [[nodiscard]] bool IsOver() const { return isOver_; }

 private:
  // Reads what is there now, up to the longest reply.
  void Read();
  [[nodiscard]] std::optional<DialogWire::Reply> TakeReply();

  HelperProgram::HelperConversation conversation_;
  std::string request_;
  std::string reply_;
  bool isOver_ = false;
};

}  // namespace Dialogs
