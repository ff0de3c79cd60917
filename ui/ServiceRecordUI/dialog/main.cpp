#include "dialog/Questions.h"
#include "libs/DialogWire/DialogWire.h"
#include "libs/Files/WholeContent.h"
#include "libs/Terminal/Terminal.h"
#include "request/DialogRequest.h"

#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <exception>
#include <optional>
#include <string>

namespace {

using DialogWire::Reply;

// `given` is the descriptor of the terminal that the program was given.
Reply Converse(std::optional<int> given) {
  const std::optional<Dialogs::DialogRequest> request = Dialogs::ReadRequest(STDIN_FILENO);
  // The credential program asks for a log-on on a terminal by itself.
  if (!request || request->dialog == DialogWire::kLogOn) return Reply::UnknownRequest;
  std::optional<Terminal::Terminal> terminal =
      given ? Terminal::Terminal::OpenAgain(*given) : Terminal::Terminal::Open();
  if (!terminal) return Reply::NoDisplay;
  if (!terminal->TakeTurn()) return Reply::Declined;

  const std::size_t columns = terminal->Columns();
  if (request->dialog == DialogWire::kErrorMessage) {
    const std::string message = Dialogs::Questions::ErrorMessage(request->details, columns);
    return terminal->Print(message) ? Reply::Accepted : Reply::NoDisplay;
  }
  const bool isNew = request->dialog == DialogWire::kAddStore;
  const bool yes = terminal->Confirm(isNew ? Dialogs::Questions::AddStore(request->details, columns)
                                           : Dialogs::Questions::ReplaceStore(request->details, columns));
  return yes ? Reply::Accepted : Reply::Declined;
}

}  // namespace

// Shows one dialog of the UI module on a terminal and replies on standard output.
int main(int count, char** arguments) {
  // In the background a terminal stops its readers and writers; they shall fail instead.
  std::signal(SIGTTIN, SIG_IGN);
  std::signal(SIGTTOU, SIG_IGN);
  try {
    const std::string reply =
        DialogWire::LineOf(Converse(count == 2 ? DialogWire::TerminalOf(arguments[1]) : std::nullopt));
    return Files::WriteAll(STDOUT_FILENO, reply).error ? 1 : 0;
  } catch (const std::exception&) {
    return 1;
  }
}
