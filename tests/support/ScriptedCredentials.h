#pragma once

#include "libs/Files/FileDescriptor.h"

#include <filesystem>
#include <string>
#include <vector>

namespace TestSupport {

// What the scripted credential program in a folder replies, and what it was asked.
class ScriptedCredentials {
 public:
  // Keeps each request and gives the next reply to its action; "status=no-terminal" where there is none.
  static const char* const kScript;

  explicit ScriptedCredentials(std::filesystem::path folder) : folder_(std::move(folder)) {}
  // Puts the script in the place of the folder's credential program.
  void Install() const;

  // The reply to the next "get" without one, its lines without the empty one.
  void WillReply(const std::string& lines);
  void WillGive(const std::string& userName, const std::string& password, const std::string& more = {});
  // From now on questions stay open until their input closes.
  void WillHold();
  // Blocks until that many questions are open at once.
  void WaitUntilHeld(int questions = 1) const;

  // The requests so far, as the action and the lines, each ended by a line feed.
  [[nodiscard]] std::vector<std::string> Requests() const;
  [[nodiscard]] std::vector<std::string> Actions() const;
  // The display that the program had at each of them.
  [[nodiscard]] std::vector<std::string> Displays() const;

 private:
  std::filesystem::path folder_;
  Files::FileDescriptor held_;
  int replies_ = 0;
};

}  // namespace TestSupport
