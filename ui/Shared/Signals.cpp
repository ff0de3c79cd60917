#include "Shared/Signals.h"

#include <glib-unix.h>

#include <memory>
#include <string>
#include <utility>

namespace Windows::Signals {
namespace {

using Action = std::function<void()>;
using Question = std::function<bool()>;

template <class Function>
void Release(gpointer data) {
  const std::unique_ptr<Function> owned(static_cast<Function*>(data));
}

template <class Function>
void ReleaseClosure(gpointer data, GClosure* /*closure*/) {
  Release<Function>(data);
}

// Swapped, so that the function comes first whatever arguments the signal has.
void Run(gpointer data) {
  (*static_cast<Action*>(data))();
}

gboolean Answer(gpointer data) {
  return static_cast<gboolean>((*static_cast<Question*>(data))());
}

gboolean RunOnce(gpointer data) {
  Run(data);
  return G_SOURCE_REMOVE;
}

gboolean RunAgain(gpointer data) {
  Run(data);
  return G_SOURCE_CONTINUE;
}

gboolean AnswerOfDescriptor(gint /*descriptor*/, GIOCondition /*condition*/, gpointer data) {
  return Answer(data);
}

}  // namespace

void Connect(gpointer object, const char* signal, std::function<void()> function) {
  g_signal_connect_data(object, signal, G_CALLBACK(Run), new Action(std::move(function)),
                        ReleaseClosure<Action>, G_CONNECT_SWAPPED);
}

void ConnectAnswered(gpointer object, const char* signal, std::function<bool()> function) {
  g_signal_connect_data(object, signal, G_CALLBACK(Answer), new Question(std::move(function)),
                        ReleaseClosure<Question>, G_CONNECT_SWAPPED);
}

void ConnectChange(gpointer object, const char* property, std::function<void()> function) {
  Connect(object, (std::string("notify::") + property).c_str(), std::move(function));
}

void After(unsigned milliseconds, std::function<void()> function) {
  g_timeout_add_full(G_PRIORITY_DEFAULT, milliseconds, RunOnce, new Action(std::move(function)),
                     Release<Action>);
}

void WhenReadable(int descriptor, std::function<bool()> function) {
  g_unix_fd_add_full(G_PRIORITY_DEFAULT, descriptor, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR),
                     AnswerOfDescriptor, new Question(std::move(function)), Release<Question>);
}

void OnSystemSignal(int number, std::function<void()> function) {
  g_unix_signal_add_full(G_PRIORITY_DEFAULT, number, RunAgain, new Action(std::move(function)),
                         Release<Action>);
}

}  // namespace Windows::Signals
