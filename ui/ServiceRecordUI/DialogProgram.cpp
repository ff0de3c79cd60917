#include "DialogProgram.h"

#include "BesideModule.h"
#include "libs/DialogWire/DialogWire.h"
#include "libs/HelperProgram/HelperProcess.h"

#include <filesystem>
#include <utility>

namespace Dialogs {

std::vector<DialogProgram> DialogProgram::For(int terminal) {
  const DialogProgram onTerminal(DialogWire::kTerminalProgram, terminal);
  if (terminal >= 0 || !DialogWire::MayHaveDisplay()) return {onTerminal};
  return {DialogProgram(DialogWire::kWindowProgram), onTerminal};
}

std::optional<DialogConversation> DialogProgram::Begin(std::string request, int interruption,
                                                       int furtherInterruption) const {
  const std::optional<std::filesystem::path> path = BesideModule(name_);
  if (!path) return std::nullopt;
  std::vector<std::string> arguments;
  if (terminal_ >= 0)
    arguments.push_back(DialogWire::TerminalArgument(HelperProgram::HelperProcess::kGivenDescriptor));
  std::optional<HelperProgram::HelperProcess> program =
      HelperProgram::HelperProcess::Start(*path, std::move(arguments), terminal_);
  if (!program) return std::nullopt;
  return std::optional<DialogConversation>(std::in_place, std::move(*program), std::move(request),
                                           interruption, furtherInterruption);
}

}  // namespace Dialogs
