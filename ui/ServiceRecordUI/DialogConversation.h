#pragma once

#include "DialogWire.h"
#include "libs/HelperProgram/HelperProcess.h"

#include <cstddef>
#include <optional>
#include <string>

// One dialog: the request goes out, the reply comes in. Belongs to the thread that runs it.
class DialogConversation {
 public:
  // `terminationDescriptor` is only polled.
  DialogConversation(HelperProcess program, std::string request, int terminationDescriptor);

  // Blocks until the program has replied. Nothing when it ended, closed its output or said anything but one
  // of the replies, and when termination was requested first.
  [[nodiscard]] std::optional<DialogWire::Reply> AwaitReply();

  // Blocks until the program has ended or termination was requested; what it says does not matter.
  void AwaitEnd();

 private:
  // Waits for the next event. False on termination.
  [[nodiscard]] bool Wait();
  // Sends what the program takes now and reads what is there now.
  void Exchange();

  HelperProcess program_;
  std::string request_;
  std::size_t sent_ = 0;
  std::string reply_;
  int terminationDescriptor_;
  bool outputOpen_ = true;
  bool ended_ = false;
};
