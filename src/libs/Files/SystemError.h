#pragma once

#include <cerrno>
#include <system_error>

namespace Files {

// The error of the system call that has just failed on this thread.
[[nodiscard]] inline std::error_code LastError() {
  return {errno, std::generic_category()};
}

}  // namespace Files
