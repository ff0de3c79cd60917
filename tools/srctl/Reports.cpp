#include "Reports.h"

#include "TerminalText.h"

#include <iostream>

namespace commands {

Status Refuse(const std::string& message) {
  std::cerr << "srctl: " << message << '\n';
  return Status::Refused;
}

Status ReportUnreachable(const std::string& problem) {
  std::cerr
      << "srctl: The agent cannot be reached: " << TerminalText::OneLine(problem)
      << ".\nRun srctl in a desktop session in which the agent is installed. Its system log says why it does "
         "not start: journalctl --user -t ServiceRecords\n";
  return Status::Unreachable;
}

std::string Quoted(const std::string& text) {
  return "\"" + TerminalText::OneLine(text) + "\"";
}

}  // namespace commands
