#include "DialogProgram.h"

#include "libs/DialogWire/DialogWire.h"
#include "libs/HelperProgram/HelperProcess.h"
#include "libs/SRUIProtocol/SRUIProtocol.h"

#include <dlfcn.h>

#include <filesystem>
#include <utility>

namespace Dialogs {
namespace {

std::optional<std::filesystem::path> BesideModule(const char* name) {
  Dl_info module{};
  if (::dladdr(reinterpret_cast<const void*>(&ServiceRecordUIPrincipalClass), &module) == 0)
    return std::nullopt;
  return std::filesystem::path(module.dli_fname).parent_path() / name;
}

}  // namespace

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
