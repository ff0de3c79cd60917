#include "opening/OwnDesktop.h"

#include <cstdlib>

namespace Srctl {
namespace {

bool IsSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

}  // namespace

bool HasDesktop() {
  return IsSet("WAYLAND_DISPLAY") || IsSet("DISPLAY");
}

}  // namespace Srctl
