#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace Bench {

// What the kernel says of a process of this user. They throw std::runtime_error when it has ended.

// A line of its memory altogether, "Private_Dirty" or "Pss", in bytes.
[[nodiscard]] double Memory(pid_t process, const std::string& line);
// How often its threads have been given a processor, since they began: each wake-up is one.
[[nodiscard]] std::uint64_t Switches(pid_t process);

}  // namespace Bench
