#pragma once

#include "libs/Files/FileDescriptor.h"

#include <cstdint>
#include <streambuf>
#include <string>

namespace Agent {

// The buffer behind the trace stream: each character is one byte of the log, whatever the locale. Unopened,
// or on a full disk, what is written is dropped. Guarded by the trace's mutex.
class LogFileBuffer : public std::wstreambuf {
 public:
  LogFileBuffer() = default;

  // Opens the file for appending, as its only writer; what it held before is kept with "BUP" appended to its
  // name. False, and the buffer closed, when another process writes the file, and for anything but a regular
  // file of one's own, such as a link.
  bool OpenKeepingBackup(const std::string& path);
  // The same with an empty file in the place of the one that is being written, which becomes the backup. Also
  // empty when it cannot be renamed.
  bool BeginAnew(const std::string& path);
  // Writes to standard error.
  bool OpenStandardError();

  // How many bytes the file holds.
  [[nodiscard]] std::uint64_t Size() const;

 protected:
  int_type overflow(int_type character) override;
  std::streamsize xsputn(const wchar_t* characters, std::streamsize count) override;
  int sync() override;

 private:
  void Take(Files::FileDescriptor file);
  bool Empty();

  Files::FileDescriptor file_;
  std::string pending_;
  bool lineIsTorn_ = false;  // a write failed in the middle of a line
};

}  // namespace Agent
