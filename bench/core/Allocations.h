#pragma once

#include <cstdint>

namespace Bench {

// What the calling thread has asked the heap for since it began.
[[nodiscard]] std::uint64_t AllocatedBytes();

}  // namespace Bench
