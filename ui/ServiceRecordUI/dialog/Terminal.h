#pragma once

#include "FileDescriptor.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct termios;

// The user's terminal, for one dialog. Every wait ends when the program's standard input closes.
class Terminal {
 public:
  // The terminal that SERVICERECORDS_TERMINAL names, else the controlling one. Nothing when it cannot be
  // opened or is no terminal.
  [[nodiscard]] static std::optional<Terminal> Open();

  // Waits until no other dialog of this user is on a terminal, so that no answer goes to another dialog's
  // question. From then on the terminal edits and echoes lines, whatever mode it was in; both the turn and
  // the mode last as long as the object lives.
  [[nodiscard]] bool TakeTurn();

  // How wide the terminal is; 80 when it does not know.
  [[nodiscard]] std::size_t Columns() const;

  // False when the terminal is gone.
  bool Print(std::string_view utf8);

  // Asks a yes-or-no question until it is answered; what was typed before does not count. An empty answer,
  // the end of the terminal's input and the terminal's end are a no.
  [[nodiscard]] bool Confirm(std::string_view question);

 private:
  struct ModeRestorer {
    int terminal;
    void operator()(termios* mode) const;
  };
  using SavedMode = std::unique_ptr<termios, ModeRestorer>;

  explicit Terminal(FileDescriptor terminal) : terminal_(std::move(terminal)) {}

  // Nothing when the terminal is gone.
  [[nodiscard]] SavedMode SwitchToLines() const;
  // Waits for the terminal. False when standard input closed.
  [[nodiscard]] bool WaitFor(short events) const;
  // A line without its end; nothing at the end of the terminal's input.
  [[nodiscard]] std::optional<std::string> ReadLine();

  FileDescriptor terminal_;
  FileDescriptor turn_;
  SavedMode savedMode_;  // declared last: put back before the turn ends
};
