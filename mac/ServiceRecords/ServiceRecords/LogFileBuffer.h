#pragma once

#include <streambuf>
#include <string>

// The buffer behind the trace stream: each character is one byte of the log, whatever the locale. Unopened,
// or on a full disk, what is written is dropped. Guarded by the trace's mutex.
class LogFileBuffer : public std::wstreambuf {
 public:
  LogFileBuffer() = default;
  ~LogFileBuffer() override;
  LogFileBuffer(const LogFileBuffer&) = delete;
  LogFileBuffer& operator=(const LogFileBuffer&) = delete;

  // Opens the file, mode 0600 when it is new, and empties it. False, and the buffer closed, for anything but
  // a regular file.
  bool OpenTruncated(const std::string& path);
  // Writes to standard error.
  bool OpenStandardError();
  void Close();

  // Copies a regular file byte for byte; nothing happens when it cannot be read.
  static void Copy(const std::string& from, const std::string& to);

 protected:
  int_type overflow(int_type character) override;
  std::streamsize xsputn(const wchar_t* characters, std::streamsize count) override;
  int sync() override;

 private:
  int file_ = -1;
  std::string pending_;
  bool lineIsTorn_ = false;  // a write failed in the middle of a line
};
