#include "Answers.h"
#include "Interruption.h"
#include "RequestReader.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <exception>
#include <optional>
#include <string_view>

namespace {

bool WriteAll(int output, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(output, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

int Converse(std::string_view action) {
  const Credential::Interruption interruption;
  std::optional<CredentialWire::CredentialMessage> request =
      Credential::ReadRequest(STDIN_FILENO, interruption.Descriptor());
  if (!request) request.emplace();
  const CredentialWire::CredentialMessage reply =
      Credential::AnswerTo(action, *request, interruption.Descriptor());
  return WriteAll(STDOUT_FILENO, reply.Text().View()) ? 0 : 1;
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
