#pragma once

#include "Commands.h"
#include "bus/AgentClient.h"
#include "libs/Wording/Message.h"

#include <optional>
#include <string>

// How commands say why they end. One thread.
namespace Srctl::Commands {

// What to do when the agent does not answer.
[[nodiscard]] Wording::Message ReachTheAgent();

// Says on standard error why nothing was done, and what to do.
[[nodiscard]] Status Refuse(const std::string& message);
// The same where a list without stores would be the reason, and while the agent cannot read the stores is
// not.
[[nodiscard]] Status RefuseForList(AgentClient& agent, const std::string& message);
// Whether the agent cannot read the file with the stores. Its list is empty then.
[[nodiscard]] bool CannotReadStores(AgentClient& agent);
[[nodiscard]] Status RefuseWithoutStores();
// Says on standard error that there is no agent to talk to. `problem`: the reason, as AgentClient gives it.
[[nodiscard]] Status ReportUnreachable(const std::string& problem);

// The text in quotation marks, fit for a terminal.
[[nodiscard]] std::string Quoted(const std::string& text);

// The file's name as one word of a shell command that is meant to be pasted, fit for a terminal, and never an
// option.
[[nodiscard]] std::string ShellWord(const std::string& file);

// Says on standard error why the command takes so long. For AgentClient::Connect.
void SayThatAgentIsLate();

// Connects and hands the agent to `use`, which returns what is to be reported.
template <class Use>
[[nodiscard]] Status WithAgent(Use use) {
  std::string problem;
  std::optional<AgentClient> agent = AgentClient::Connect(problem, SayThatAgentIsLate);
  return agent ? use(*agent) : ReportUnreachable(problem);
}

}  // namespace Srctl::Commands
