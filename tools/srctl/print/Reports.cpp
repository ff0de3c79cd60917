#include "print/Reports.h"

#include "libs/Terminal/TerminalText.h"

#include <iostream>

namespace Srctl::Commands {

Status Refuse(const std::string& message) {
  std::cerr << "srctl: " << message << '\n';
  return Status::Refused;
}

Status RefuseForList(AgentClient& agent, const std::string& message) {
  return CannotReadStores(agent) ? RefuseWithoutStores() : Refuse(message);
}

bool CannotReadStores(AgentClient& agent) {
  return agent.StateOfSavedStores() == AgentClient::kUnreadable;
}

Status RefuseWithoutStores() {
  return Refuse(
      "The agent cannot read the file with your stores now; until it can, its list is empty and cannot be "
      "changed. What to do: srctl doctor");
}

Wording::Message ReachTheAgent() {
  return Wording::Worded(
      "Run srctl in a desktop session in which the agent is installed. Its system log says why it does not "
      "start: journalctl --user -t ServiceRecords. One that hangs is ended by: pkill -x ServiceRecords");
}

Status ReportUnreachable(const std::string& problem) {
  std::cerr << "srctl: The agent cannot be reached: " << Terminal::OneLine(problem) << ".\n"
            << ReachTheAgent().English() << '\n';
  return Status::Unreachable;
}

void SayThatAgentIsLate() {
  std::cerr
      << "srctl: The agent has not answered yet. If it asks you something, in a window or on a terminal, "
         "answer that first; it goes on then.\n";
}

std::string Quoted(const std::string& text) {
  return "\"" + Terminal::OneLine(text) + "\"";
}

std::string ShellWord(const std::string& file) {
  std::string word = file.starts_with('-') ? "'./" : "'";
  for (const char character : Terminal::OneLine(file)) {
    if (character == '\'') word += "'\\'";  // a quotation cannot hold its own mark
    word += character;
  }
  return word + "'";
}

}  // namespace Srctl::Commands
