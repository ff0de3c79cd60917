#include "window/Dialogs.h"

#include "libs/DialogWire/DialogWire.h"
#include "window/Conversation.h"
#include "window/ErrorWindow.h"
#include "window/LogOnWindow.h"
#include "window/ReplaceWindow.h"
#include "window/TrustWindow.h"

namespace Dialogs {
namespace {

using DialogWire::Reply;

void Answer(Conversation& conversation, bool accepted) {
  conversation.Reply(accepted ? Reply::Accepted : Reply::Declined);
  conversation.End();
}

void Run(const DialogWindow& window, Conversation& conversation) {
  // There is one question to a program.
  conversation.Watch([&window](const DialogRequest& /*further*/) { window.Close(); },
                     [&window] { window.Close(); });
  window.Present();
  conversation.Run();
}

template <class Window>
void Ask(const DialogRequest& request, Conversation& conversation) {
  const Window window(request.details, [&conversation](bool accepted) {
    if (!conversation.IsOver()) Answer(conversation, accepted);
  });
  Run(window, conversation);
}

// What was typed comes behind the reply.
void AskToLogOn(const DialogRequest& request, Conversation& conversation) {
  const LogOnWindow window(request.details, [&](bool accepted) {
    if (conversation.IsOver()) return;
    Answer(conversation, accepted);
    if (accepted) conversation.Write(window.Answer().Text().View());
  });
  Run(window, conversation);
}

// The reply to a message says that it is shown; the window stays until the user closes it.
void Tell(const DialogRequest& request, Conversation& conversation) {
  ErrorWindow window(request.details, [&conversation] { conversation.End(); });
  window.Present();
  conversation.Reply(Reply::Accepted);
  conversation.Watch(
      [&window, &conversation](const DialogRequest& further) {
        // What is left unanswered is shown in another window.
        if (window.IsClosed()) return;
        if (further.dialog != DialogWire::kErrorMessage) return conversation.Reply(Reply::UnknownRequest);
        window.Add(further.details);
        conversation.Reply(Reply::Accepted);
      },
      [&window] { window.Close(); });
  conversation.Run();
}

}  // namespace

void Show(const DialogRequest& request, Conversation& conversation) {
  if (request.dialog == DialogWire::kAddStore) return Ask<TrustWindow>(request, conversation);
  if (request.dialog == DialogWire::kReplaceStore) return Ask<ReplaceWindow>(request, conversation);
  if (request.dialog == DialogWire::kLogOn) return AskToLogOn(request, conversation);
  if (request.dialog == DialogWire::kErrorMessage) return Tell(request, conversation);
  conversation.Reply(Reply::UnknownRequest);
}

}  // namespace Dialogs
