#include "Shared/Adwaita.h"
#include "Shared/Program.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/DialogWire/DialogWire.h"
#include "request/DialogRequest.h"
#include "window/Conversation.h"
#include "window/Dialogs.h"

#include <unistd.h>

#include <csignal>
#include <exception>
#include <optional>

namespace {

using namespace Windows;

void TellOfDisplay(Dialogs::Conversation& conversation) {
  conversation.Reply(gtk_init_check() == FALSE ? DialogWire::Reply::NoDisplay : DialogWire::Reply::Accepted);
}

void Converse(Dialogs::Conversation& conversation) {
  const std::optional<Dialogs::DialogRequest> request = Dialogs::ReadRequest(STDIN_FILENO);
  if (!request) return conversation.Reply(DialogWire::Reply::UnknownRequest);
  Program::Prepare(Bus::ServiceNames::kServiceRecords, SR_CATALOGUES);
  if (gtk_init_check() == FALSE) return conversation.Reply(DialogWire::Reply::NoDisplay);
  adw_init();
  Dialogs::Show(*request, conversation);
}

}  // namespace

// Shows one dialog in a window, or finds out whether it could, and replies on standard output.
int main(int argc, char** argv) {
  // Whoever asked may be gone; writing shall fail then.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    Dialogs::Conversation conversation;
    if (argc == 2 && argv[1] == DialogWire::kDisplayOption) {
      TellOfDisplay(conversation);
    } else {
      Converse(conversation);
    }
    return conversation.IsWritten() ? 0 : 1;
  } catch (const std::exception&) {
    return 1;
  }
}
