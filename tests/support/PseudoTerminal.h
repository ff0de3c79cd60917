#pragma once

#include <termios.h>

#include <string>

namespace TestSupport {

// A terminal without a screen: what a program prints on it is read, and what a user would type is written
// here.
class PseudoTerminal {
 public:
  PseudoTerminal();
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  // What a program opens.
  [[nodiscard]] const std::string& Path() const { return path_; }

  // All that was printed until `end` came, echo included; a failed test when it does not come in time.
  [[nodiscard]] std::string ReadUntil(const std::string& end);
  // What was printed and not read yet.
  [[nodiscard]] std::string ReadNow();
  void Type(const std::string& keys);

  void SetColumns(unsigned short columns) const;
  // As a program that edits lines itself leaves it.
  void MakeRaw() const;
  // So that whoever asks in lines has to change its mode first: without echo, and without a line's end for
  // the return key. Ctrl+C still interrupts. The mode then.
  termios MakeUnfit() const;
  [[nodiscard]] termios Mode() const;
  // Ends the terminal as a closed window does; nothing else may be done with it then.
  void HangUp();

 private:
  int master_;
  int slave_;
  std::string path_;
  std::string unread_;
};

}  // namespace TestSupport
