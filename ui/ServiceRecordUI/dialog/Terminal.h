#pragma once

#include "FileDescriptor.h"

#include <optional>
#include <string>
#include <string_view>

// The user's terminal, for one dialog. Every wait ends when the program's standard input closes.
class Terminal {
 public:
  // The terminal that SERVICERECORDS_TERMINAL names, else the controlling one. Nothing when it cannot be
  // opened or is no terminal.
  [[nodiscard]] static std::optional<Terminal> Open();

  // Waits until no other dialog of this user is on a terminal, so that no answer goes to another dialog's
  // question. Held as long as the object lives.
  [[nodiscard]] bool TakeTurn();

  // False when the terminal is gone.
  bool Print(std::string_view utf8);

  // Asks a yes-or-no question until it is answered; what was typed before does not count. An empty answer,
  // the end of the terminal's input and the terminal's end are a no.
  [[nodiscard]] bool Confirm(std::string_view question);

 private:
  explicit Terminal(FileDescriptor terminal) : terminal_(std::move(terminal)) {}

  // Waits for the terminal. False when standard input closed.
  [[nodiscard]] bool WaitFor(short events) const;
  // A line without its end; nothing at the end of the terminal's input.
  [[nodiscard]] std::optional<std::string> ReadLine();

  FileDescriptor terminal_;
  FileDescriptor turn_;
};
