#include "DialogProgram.h"

#include "BesideModule.h"
#include "libs/DialogWire/DialogWire.h"
#include "libs/HelperProgram/HelperProcess.h"

#include <filesystem>
#include <utility>

namespace Dialogs {

std::vector<DialogProgram> DialogProgram::For(int terminal, const Display::Variables& desktop) {
  std::vector<DialogProgram> programs;
  if (terminal < 0) {
    for (const Display::Variables& place : Display::ToShowOn(desktop))
      programs.push_back(DialogProgram(DialogWire::kWindowProgram, -1, place));
  }
  programs.push_back(DialogProgram(DialogWire::kTerminalProgram, terminal, {}));
  return programs;
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
