#pragma once

#include "libs/Files/FileDescriptor.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

struct termios;

namespace Terminal {

// The user's terminal, for one conversation. Every wait ends when the program's standard input closes, and
// when the given interruption comes.
class Terminal {
 public:
  // The terminal that SERVICERECORDS_TERMINAL names, else the controlling one. Nothing when it cannot be
  // opened or is no terminal. `interruption` is only polled: it is readable when no more is to be asked.
  [[nodiscard]] static std::optional<Terminal> Open(int interruption = -1);

  // The terminal that the descriptor, which stays the caller's, is open on.
  [[nodiscard]] static std::optional<Terminal> OpenAgain(int descriptor, int interruption = -1);

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

  // Prints the question and reads one line, without its end, into the caller's memory, and nowhere else; a
  // longer line is none. Nothing at the end of the terminal's input and at the terminal's end.
  enum class Echo { On, Off };
  [[nodiscard]] std::optional<std::size_t> Ask(std::string_view question, std::span<char> answer, Echo echo);

  // Drops what was typed so far.
  void Forget() const;

 private:
  struct ModeRestorer {
    int terminal;
    void operator()(termios* mode) const;
  };
  using SavedMode = std::unique_ptr<termios, ModeRestorer>;

  // Nothing when it is no terminal.
  [[nodiscard]] static std::optional<Terminal> On(Files::FileDescriptor terminal, int interruption);

  Terminal(Files::FileDescriptor terminal, int interruption)
      : terminal_(std::move(terminal)), interruption_(interruption) {}

  // Nothing when the terminal is gone.
  [[nodiscard]] SavedMode SwitchToLines() const;
  // Waits for the terminal. False when standard input closed or the interruption came.
  [[nodiscard]] bool WaitFor(short events) const;
  void SetEcho(Echo echo) const;
  // The length of a line without its end; nothing at the end of the terminal's input.
  [[nodiscard]] std::optional<std::size_t> ReadLine(std::span<char> line);

  Files::FileDescriptor terminal_;
  int interruption_;
  Files::FileDescriptor turn_;
  SavedMode savedMode_;  // declared last: put back before the turn ends
};

// Waits until no dialog of this user is on a terminal, but not longer than the limit. The descriptor is that
// of the waiting one's own terminal.
void AwaitTurn(int descriptor, std::chrono::milliseconds limit);

}  // namespace Terminal
