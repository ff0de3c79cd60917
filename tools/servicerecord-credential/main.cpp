#include "Answers.h"
#include "Interruption.h"
#include "RequestReader.h"
#include "libs/Files/WholeContent.h"

#include <unistd.h>

#include <csignal>
#include <exception>
#include <optional>
#include <string_view>

namespace {

int Converse(std::string_view action) {
  const Credential::Interruption interruption;
  std::optional<CredentialWire::CredentialMessage> request =
      Credential::ReadRequest(STDIN_FILENO, interruption.Descriptor());
  if (!request) request.emplace();
  const CredentialWire::CredentialMessage reply =
      Credential::AnswerTo(action, *request, interruption.Descriptor());
  return Files::WriteAll(STDOUT_FILENO, reply.Text().View()).error ? 1 : 0;
}

}  // namespace

// Answers one request for a credential: its only argument is the action, the request comes on standard input
// and the reply goes to standard output.
int main(int count, char** arguments) {
  // In the background a terminal stops its readers and writers, and a reader may be gone; calls shall fail
  // instead.
  for (const int signal : {SIGTTIN, SIGTTOU, SIGPIPE}) std::signal(signal, SIG_IGN);
  try {
    return Converse(count == 2 ? arguments[1] : "");
  } catch (const std::exception&) {
    return 1;
  }
}
