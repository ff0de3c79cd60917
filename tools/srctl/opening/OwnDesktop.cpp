#include "opening/OwnDesktop.h"

#include "libs/DialogWire/DialogWire.h"
#include "libs/Display/DisplayVariables.h"
#include "libs/HelperProgram/HelperConversation.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace Srctl::OwnDesktop {
namespace {

using HelperProgram::HelperConversation;
using HelperProgram::HelperProcess;

// A display on another machine may not even refuse.
constexpr std::chrono::seconds kPatience{5};

std::string ReplyOf(HelperProcess program) {
  HelperConversation conversation(std::move(program), -1);
  const auto deadline = HelperConversation::Clock::now() + kPatience;
  std::string reply(DialogWire::kMaximumReply, '\0');
  std::size_t used = 0;
  while (!conversation.IsOver() && used < reply.size() && conversation.Continue("", deadline))
    used += conversation.ReadSome(std::span(reply).subspan(used));
  reply.resize(used);
  return reply;
}

}  // namespace

bool ShowsWindows(const std::filesystem::path& plugIn) {
  if (Display::OfThisProcess().empty()) return false;
  std::optional<HelperProcess> program =
      HelperProcess::Start(plugIn / DialogWire::kWindowProgram, {std::string(DialogWire::kDisplayOption)});
  return program && ReplyOf(std::move(*program)) == DialogWire::LineOf(DialogWire::Reply::Accepted);
}

}  // namespace Srctl::OwnDesktop
