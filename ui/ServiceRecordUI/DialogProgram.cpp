#include "DialogProgram.h"

#include "BesideModule.h"
#include "libs/DialogWire/DialogWire.h"
#include "libs/HelperProgram/HelperProcess.h"

#include <filesystem>
#include <utility>

namespace Dialogs {

std::vector<DialogProgram> DialogProgram::For(int terminal, const Display::Variables& desktop) {
  const DialogProgram onTerminal(DialogWire::kTerminalProgram, terminal, {});
  const bool mayHaveDisplay = !desktop.empty() || !Display::OfThisProcess().empty();
  if (terminal >= 0 || !mayHaveDisplay) return {onTerminal};
  return {DialogProgram(DialogWire::kWindowProgram, -1, desktop), onTerminal};
}

std::optional<DialogConversation> DialogProgram::Begin(std::string request, int interruption,
                                                       int furtherInterruption) const {
  const std::optional<std::filesystem::path> path = BesideModule(name_);
  if (!path) return std::nullopt;
  std::vector<std::string> arguments;
  if (terminal_ >= 0)
    arguments.push_back(DialogWire::TerminalArgument(HelperProgram::HelperProcess::kGivenDescriptor));
  std::vector<std::string> environment;
  if (!desktop_.empty()) environment = Display::EnvironmentOn(desktop_);
  std::optional<HelperProgram::HelperProcess> program =
      HelperProgram::HelperProcess::Start(*path, std::move(arguments), terminal_, std::move(environment));
  if (!program) return std::nullopt;
  return std::optional<DialogConversation>(std::in_place, std::move(*program), std::move(request),
                                           interruption, furtherInterruption);
}

}  // namespace Dialogs
