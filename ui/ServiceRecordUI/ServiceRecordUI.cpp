#include "DialogConversation.h"
#include "DialogProgram.h"
#include "ErrorBoxes.h"
#include "ErrorLog.h"
#include "ViewLibrary.h"
#include "libs/DialogWire/DialogWire.h"
#include "libs/Display/DisplayVariables.h"
#include "libs/SRUIProtocol/SRUIProtocol.h"

#include <poll.h>

#include <atomic>
#include <cstdint>
#include <optional>
#include <string_view>

namespace {

using DialogWire::Reply;

constexpr std::uint32_t kFirstWithContext = 2;
constexpr std::uint32_t kFirstWithDesktop = 3;
constexpr int kNone = -1;

// What the host offers for the dialogs of the thread that asks.
struct Context {
  int terminal = kNone;
  int withdrawal = kNone;
  Display::Variables desktop = {};
};

std::atomic<int> g_terminationDescriptor{kNone};
thread_local Context t_context;

Context ContextOf(const SRUIHost& host) {
  if (host.version < kFirstWithContext) return {};
  Context context{host.terminalDescriptor, host.withdrawalDescriptor};
  if (host.version >= kFirstWithDesktop) context.desktop = Display::CopyOf(host.desktop);
  return context;
}

bool IsReadable(int descriptor) {
  pollfd state{descriptor, POLLIN, 0};
  return ::poll(&state, 1, 0) > 0;
}

bool IsTerminating() {
  return IsReadable(g_terminationDescriptor.load());
}

bool IsWanted() {
  return !IsTerminating() && !IsReadable(t_context.withdrawal);
}

// What the first program replies that can show the dialog; nothing when none can. A dialog that nobody wants
// any more counts as declined.
std::optional<Reply> ReplyTo(std::string_view dialog, const char* details) {
  for (const Dialogs::DialogProgram& program :
       Dialogs::DialogProgram::For(t_context.terminal, t_context.desktop)) {
    std::optional<Dialogs::DialogConversation> conversation = program.Begin(
        DialogWire::RequestFor(dialog, details), g_terminationDescriptor.load(), t_context.withdrawal);
    if (!conversation) continue;
    const std::optional<Reply> reply = conversation->AwaitReply();
    if (reply && reply != Reply::NoDisplay) return reply;
    if (!reply && !IsWanted()) return Reply::Declined;
  }
  return std::nullopt;
}

// Nothing may be thrown across the C boundary; whatever goes wrong is no consent.
int Ask(std::string_view dialog, const char* details) noexcept {
  if (details == nullptr) return SRUI_COULD_NOT_ASK;
  try {
    const std::optional<Reply> reply = ReplyTo(dialog, details);
    if (reply == Reply::Accepted) return 1;
    return reply == Reply::Declined ? 0 : SRUI_COULD_NOT_ASK;
  } catch (...) {
    return SRUI_COULD_NOT_ASK;
  }
}

int AddStore(const char* details) {
  return Ask(DialogWire::kAddStore, details);
}

int ReplaceStore(const char* details) {
  return Ask(DialogWire::kReplaceStore, details);
}

// Until it stands there: whoever has lent the terminal takes it back once the host has no more to say.
void PrintOnTerminal(const char* details) {
  const std::optional<Reply> reply = ReplyTo(DialogWire::kErrorMessage, details);
  if (reply != Reply::Accepted && IsWanted()) Dialogs::ErrorLog::Write(Dialogs::ErrorLog::kNotShown, details);
}

void ErrorMessage(const char* details) {
  if (details == nullptr || !IsWanted()) return;
  try {
    if (t_context.terminal >= 0) return PrintOnTerminal(details);
    Dialogs::ErrorBoxes::Instance().Show(details, t_context.desktop, g_terminationDescriptor.load());
  } catch (...) {
    return;
  }
}

constexpr SRUIProtocol kEntryPoints{SRUI_PROTOCOL_VERSION, AddStore, ReplaceStore, ErrorMessage,
                                    Dialogs::ViewLibrary::MakeView};

}  // namespace

const SRUIProtocol* ServiceRecordUIPrincipalClass(const SRUIHost* host) {
  if (host == nullptr || host->version == 0) return nullptr;
  g_terminationDescriptor = host->terminationDescriptor;
  try {
    t_context = ContextOf(*host);
  } catch (...) {
    return nullptr;
  }
  return &kEntryPoints;
}
