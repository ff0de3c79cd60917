#include "Agent/LoggingSetting.h"

#include "libs/Files/UserDefaults.h"

#include <memory>

namespace Stores::LoggingSetting {

using namespace Windows;

namespace {

using Done = std::function<void(bool saved)>;

constexpr char kLogLevel[] = "LogLevel";

void Save(GTask* task, gpointer /*source*/, gpointer on, GCancellable* /*cancellable*/) {
  g_task_return_boolean(
      task, Files::UserDefaults::Standard().SetInteger(kLogLevel, GPOINTER_TO_INT(on)) ? FALSE : TRUE);
}

void Tell(GObject* /*source*/, GAsyncResult* result, gpointer done) {
  const std::unique_ptr<Done> owner(static_cast<Done*>(done));
  ErrorPtr error;
  const bool saved = g_task_propagate_boolean(G_TASK(result), Out(error)) != FALSE;
  if (!error) (*owner)(saved);
}

}  // namespace

bool IsOn() {
  return Files::UserDefaults::Standard().Integer(kLogLevel) != 0;
}

void Set(bool on, GCancellable* cancellable, const Done& done) {
  const ObjectPtr<GTask> task(
      g_task_new(nullptr, cancellable, &Tell, std::make_unique<Done>(done).release()));
  g_task_set_task_data(task.get(), GINT_TO_POINTER(on ? 1 : 0), nullptr);
  g_task_run_in_thread(task.get(), &Save);
}

}  // namespace Stores::LoggingSetting
