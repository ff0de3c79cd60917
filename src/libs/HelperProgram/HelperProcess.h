#pragma once

#include "libs/Files/FileDescriptor.h"

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace HelperProgram {

// A running program that serves one conversation, and the two ends of its standard input and output. It
// inherits no blocked signal, and no other descriptor than standard error and the one it is given. Ends with
// the object. One thread at a time.
class HelperProcess {
 public:
  // The number under which the program finds the descriptor that it is given.
  static constexpr int kGivenDescriptor = 3;

  // Its arguments are its name and `arguments`, which everybody on the machine can read. `given` is shared
  // with the program; -1: none. `environment` holds its variables as NAME=value; empty: this process's own.
  // Nothing when the program cannot be started.
  [[nodiscard]] static std::optional<HelperProcess> Start(const std::filesystem::path& program,
                                                          std::vector<std::string> arguments = {},
                                                          int given = -1,
                                                          std::vector<std::string> environment = {});

  HelperProcess(HelperProcess&&) noexcept;
  HelperProcess& operator=(HelperProcess&&) = delete;
  // Closes the program's input and output, which ends it; one that does not end within a second is killed.
  // Leaves no zombie behind.
  ~HelperProcess();

  // Non-blocking socket; send to it without SIGPIPE.
  [[nodiscard]] int Input() const { return input_.Get(); }
  // Non-blocking; at its end when the program has closed its output.
  [[nodiscard]] int Output() const { return output_.Get(); }

  // How much of the text the program takes now. All of it when it reads no further: it may still answer.
  [[nodiscard]] std::size_t SendSome(std::string_view text) const;
  // How many bytes of output are there now, read into `buffer`. Nothing at the output's end.
  [[nodiscard]] std::optional<std::size_t> ReadSome(std::span<char> buffer) const;

  // Readable when the program has ended, even if a child of its own still holds the output.
  [[nodiscard]] int Ended() const { return process_.Get(); }
  // Whether it has ended, with status 0.
  [[nodiscard]] bool HasSucceeded() const;

 private:
  HelperProcess(pid_t id, Files::FileDescriptor process, Files::FileDescriptor input,
                Files::FileDescriptor output);

  pid_t id_;
  Files::FileDescriptor process_;
  Files::FileDescriptor input_;
  Files::FileDescriptor output_;
};

}  // namespace HelperProgram
