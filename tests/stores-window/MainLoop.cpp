#include "stores-window/MainLoop.h"

#include "Shared/Gio.h"

namespace Stores {

// Looks again after each event, and every now and then for what is no event.
bool RunUntil(const std::function<bool()>& condition) {
  constexpr guint kMillisecondsBetweenLooks = 10;
  constexpr int kMostLooks = 3'000;
  int looks = 0;
  const auto count = [](gpointer counted) -> gboolean {
    ++*static_cast<int*>(counted);
    return G_SOURCE_CONTINUE;
  };
  const guint timer = g_timeout_add(kMillisecondsBetweenLooks, +count, &looks);
  while (!condition() && looks < kMostLooks) g_main_context_iteration(nullptr, TRUE);
  g_source_remove(timer);
  return condition();
}

void RunPending() {
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
}

}  // namespace Stores
