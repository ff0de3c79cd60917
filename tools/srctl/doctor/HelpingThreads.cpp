#include "doctor/HelpingThreads.h"

#include <system_error>

namespace Srctl {

std::vector<std::jthread> StartHelpers(std::size_t count, const std::function<void()>& work) {
  std::vector<std::jthread> helpers;
  helpers.reserve(count);
  try {
    while (helpers.size() < count) helpers.emplace_back(work);
  } catch (const std::system_error&) {
    // Those that are there do the rest.
  }
  return helpers;
}

}  // namespace Srctl
