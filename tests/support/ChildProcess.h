#pragma once

#include "libs/Files/FileDescriptor.h"

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace TestSupport {

struct ChildOptions {
  bool captureErrors = false;      // takes standard error together with standard output
  std::vector<int> keepOpen = {};  // descriptors that the child inherits under the same numbers
};

// A program that ends with this object: SIGTERM, ten seconds, SIGKILL. Standard input is empty, standard
// output is kept, standard error is the test's own. The child also gets SIGTERM when the thread that started
// it ends. One thread.
class ChildProcess {
 public:
  // `command`: the program, looked for in PATH, and its arguments. `environment`: NAME=value, on top of the
  // test's own. Throws std::system_error when there is no process to be had; a program that cannot be run
  // ends with status 127.
  explicit ChildProcess(const std::vector<std::string>& command,
                        const std::vector<std::string>& environment = {}, const ChildOptions& options = {});
  ~ChildProcess();
  ChildProcess(ChildProcess&& other) noexcept;
  ChildProcess& operator=(ChildProcess&&) = delete;

  [[nodiscard]] pid_t Pid() const { return pid_; }
  [[nodiscard]] bool IsRunning() { return !WaitFor(std::chrono::milliseconds(0)).has_value(); }
  // Nothing happens when the child has ended.
  void Signal(int signal);

  // The exit status, 128 and the signal's number for a child that a signal ended. Throws std::runtime_error
  // when it does not end within a minute.
  int Wait();
  // The same, or nothing when it does not end within the time.
  [[nodiscard]] std::optional<int> WaitFor(std::chrono::milliseconds limit);

  // The output so far.
  [[nodiscard]] std::string Output() const;
  // Returns the output once it contains the text. Throws std::runtime_error when the child ends before, or
  // after twenty seconds.
  std::string WaitForOutput(const std::string& text);

 private:
  void TakeStatus(int waitStatus);

  pid_t pid_ = -1;
  std::optional<int> status_;
  Files::FileDescriptor process_;
  Files::FileDescriptor output_;
};

}  // namespace TestSupport
