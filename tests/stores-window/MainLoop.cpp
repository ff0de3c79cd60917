#include "stores-window/MainLoop.h"

#include "Shared/Gio.h"

namespace Stores {

bool RunUntil(const std::function<bool()>& condition) {
  constexpr guint kLimit = 30'000;
  bool isLate = false;
  const auto note = [](gpointer late) -> gboolean {
    *static_cast<bool*>(late) = true;
    return G_SOURCE_CONTINUE;
  };
  const guint timer = g_timeout_add(kLimit, +note, &isLate);
  while (!condition() && !isLate) g_main_context_iteration(nullptr, TRUE);
  g_source_remove(timer);
  return condition();
}

void RunPending() {
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
}

}  // namespace Stores
