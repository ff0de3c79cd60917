#include "window/Conversation.h"

#include "Shared/Gtk.h"
#include "Shared/Signals.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <optional>
#include <utility>

namespace Dialogs {

using namespace Windows;

void Conversation::Watch(std::function<void(DialogRequest)> onRequest, std::function<void()> onEnd) {
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) Signals::OnSystemSignal(number, onEnd);
  Signals::WhenReadable(STDIN_FILENO, [onRequest = std::move(onRequest), onEnd = std::move(onEnd)] {
    std::optional<DialogRequest> request = ReadRequest(STDIN_FILENO);
    if (!request) {
      onEnd();
      return false;
    }
    onRequest(std::move(*request));
    return true;
  });
}

void Conversation::Reply(DialogWire::Reply reply) {
  Write(DialogWire::LineOf(reply));
}

void Conversation::Write(std::string_view lines) {
  while (!lines.empty()) {
    const ssize_t count = ::write(STDOUT_FILENO, lines.data(), lines.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      isWritten_ = false;
      return;
    }
    lines.remove_prefix(static_cast<std::size_t>(count));
  }
}

void Conversation::Run() const {
  while (!isOver_) g_main_context_iteration(nullptr, TRUE);
}

}  // namespace Dialogs
