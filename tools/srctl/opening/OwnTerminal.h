#pragma once

#include "libs/Files/FileDescriptor.h"

#include <termios.h>

#include <optional>

namespace Srctl {

// The terminal that srctl was started on, on which the agent's dialogs may ask.
class OwnTerminal {
 public:
  // Nothing when srctl has no terminal.
  [[nodiscard]] static std::optional<OwnTerminal> Find();

  // Whether what is typed there is srctl's to read.
  [[nodiscard]] bool IsOurs() const;
  [[nodiscard]] int Descriptor() const { return terminal_.Get(); }

  // From now on a keyboard stop (Ctrl+Z) does nothing: the shell would read what is meant as an answer.
  void Lend() const;
  // Waits a moment for a dialog that is closing, and leaves the terminal as it was found.
  void TakeBack() const;

 private:
  OwnTerminal(Files::FileDescriptor terminal, const termios& mode)
      : terminal_(std::move(terminal)), mode_(mode) {}

  Files::FileDescriptor terminal_;
  termios mode_;
};

}  // namespace Srctl
