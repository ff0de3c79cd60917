#pragma once

#include <cstddef>
#include <functional>
#include <thread>
#include <vector>

namespace Srctl {

// So many threads at the same work; fewer, or none, where the system has no more to give: whoever starts them
// must be able to do the work alone.
[[nodiscard]] std::vector<std::jthread> StartHelpers(std::size_t count, const std::function<void()>& work);

}  // namespace Srctl
