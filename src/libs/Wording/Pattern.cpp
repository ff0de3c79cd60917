#include "libs/Wording/Pattern.h"

#include <algorithm>

namespace Wording {

std::string Filled(std::string_view pattern, const TextOfPlace& textOf) {
  std::string filled;
  while (!pattern.empty()) {
    const std::size_t begin = std::min(pattern.find('{'), pattern.size());
    filled += pattern.substr(0, begin);
    pattern.remove_prefix(begin);
    if (pattern.empty()) break;
    const std::string_view name = pattern.substr(1, pattern.find('}') - 1);
    if (const std::optional<std::string> text = textOf(name)) {
      filled += *text;
      pattern.remove_prefix(std::min(name.size() + 2, pattern.size()));
    } else {
      filled += pattern.front();
      pattern.remove_prefix(1);
    }
  }
  return filled;
}

}  // namespace Wording
