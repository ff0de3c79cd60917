#include "LogOnPrompt.h"

#include "libs/Terminal/Terminal.h"
#include "libs/Terminal/TerminalText.h"
#include "libs/Text/TextHelpers.h"

#include <string.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace Credential {
namespace {

constexpr std::size_t kLongestAnswer = 1024;
constexpr std::string_view kUserNameQuestion = "  User name (empty to cancel): ";
constexpr std::string_view kUserNameAgainQuestion =
    "  User name (empty for the same one, Ctrl+D to cancel): ";
constexpr std::string_view kPasswordQuestion = "  Password: ";
constexpr std::string_view kPasswordAgainQuestion = "  Password (empty to cancel): ";
constexpr std::string_view kCodeQuestion = "  Code: ";
constexpr std::string_view kRememberQuestion = "  Keep user name and password for the next time? [y/N] ";

bool IsFit(std::string_view text) {
  return std::ranges::none_of(text, util::IsAsciiControl) && util::IsUTF8(text);
}

std::optional<CredentialWire::Secret> AskFor(Terminal::Terminal& terminal, std::string_view question,
                                             Terminal::Terminal::Echo echo) {
  std::array<char, kLongestAnswer> answer{};
  std::optional<CredentialWire::Secret> fit;
  while (const std::optional<std::size_t> length = terminal.Ask(question, answer, echo)) {
    const std::string_view text(answer.data(), *length);
    if (IsFit(text)) {
      fit.emplace(text);
      break;
    }
    if (!terminal.Print("  That holds a character that cannot be sent.\n")) break;
  }
  ::explicit_bzero(answer.data(), answer.size());
  return fit;
}

std::string Shown(std::string_view text, std::size_t columns) {
  const std::string clean = Terminal::SingleBlanks(Terminal::OneLine(text, Terminal::kLongestText));
  return Terminal::Indented(clean, columns) + "\n";
}

std::string Introduction(const LogOnQuestion& question, std::size_t columns) {
  std::string text =
      question.isGateway ? "\nA gateway asks you to log on:\n\n" : "\nA store asks you to log on:\n\n";
  text += Terminal::Indented(question.server, columns) + "\n";
  if (!question.storeName.empty()) text += "\nFor the store:\n\n" + Shown(question.storeName, columns);
  if (question.isGateway && !question.gatewayName.empty())
    text += "\nThe store calls the gateway:\n\n" + Shown(question.gatewayName, columns);
  if (!question.realm.empty())
    text += "\nIt calls what the password is for:\n\n" + Shown(question.realm, columns);
  if (question.wasRejected) text += "\nThe last answer was not accepted.\n";
  if (!question.rejectedUserName.empty())
    text += "\nIt had the user name:\n\n" + Shown(question.rejectedUserName, columns);
  if (!question.knownUserName.empty()) {
    text += "\nYour user name and password are known, a new code is needed:\n\n" +
            Shown(question.knownUserName, columns);
  }
  return text + "\n";
}

bool AskForUserName(Terminal::Terminal& terminal, std::string_view offered, LogOn& answer) {
  const std::optional<CredentialWire::Secret> name = AskFor(
      terminal, offered.empty() ? kUserNameQuestion : kUserNameAgainQuestion, Terminal::Terminal::Echo::On);
  if (!name) return false;
  answer.userName = util::Trimmed(name->View());
  if (answer.userName.empty()) answer.userName = offered;
  return !answer.userName.empty();
}

bool AskForPassword(Terminal::Terminal& terminal, bool mayBeEmpty, LogOn& answer) {
  std::optional<CredentialWire::Secret> password = AskFor(
      terminal, mayBeEmpty ? kPasswordQuestion : kPasswordAgainQuestion, Terminal::Terminal::Echo::Off);
  if (!password) return false;
  answer.password = std::move(*password);
  return mayBeEmpty || !answer.password.IsEmpty();
}

bool AskForCode(Terminal::Terminal& terminal, LogOn& answer) {
  const std::optional<CredentialWire::Secret> code =
      AskFor(terminal, kCodeQuestion, Terminal::Terminal::Echo::Off);
  if (code) answer.code = CredentialWire::Secret(util::Trimmed(code->View()));
  return !answer.code.IsEmpty();
}

}  // namespace

std::optional<LogOn> AskToLogOn(Terminal::Terminal& terminal, const LogOnQuestion& question) {
  terminal.Forget();
  LogOn answer;
  answer.userName = question.knownUserName;
  const bool isKnown = !answer.userName.empty();
  // Two empty answers to an offered user name are nobody's log-on.
  const bool mayBeEmpty = question.rejectedUserName.empty() || question.needsCode;
  const bool isAnswered = terminal.Print(Introduction(question, terminal.Columns())) &&
                          (isKnown || (AskForUserName(terminal, question.rejectedUserName, answer) &&
                                       AskForPassword(terminal, mayBeEmpty, answer))) &&
                          (!question.needsCode || AskForCode(terminal, answer));
  if (!isAnswered) {
    terminal.Print("\nLog-on cancelled.\n");
    return std::nullopt;
  }
  answer.remember = question.canRemember && !isKnown && terminal.Confirm(kRememberQuestion);
  return answer;
}

}  // namespace Credential
