#include "DialogConversation.h"
#include "DialogProgram.h"
#include "ErrorBoxes.h"
#include "libs/DialogWire/DialogWire.h"
#include "libs/SRUIProtocol/SRUIProtocol.h"

#include <poll.h>

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace {

using DialogWire::Reply;

constexpr std::string_view kTooMany = "Too many error messages are open for this one";
constexpr std::string_view kNotShown = "This error message could not be shown";
constexpr std::uint32_t kFirstWithContext = 2;
constexpr int kNone = -1;

// What the host offers for the dialogs of the thread that asks.
struct Context {
  int terminal = kNone;
  int withdrawal = kNone;
};

std::atomic<int> g_terminationDescriptor{kNone};
thread_local Context t_context;

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

std::optional<DialogConversation> Begin(const DialogProgram& program, std::string_view dialog,
                                        const char* details, int withdrawal) {
  return program.Begin(DialogWire::RequestFor(dialog, details), g_terminationDescriptor.load(), withdrawal);
}

// A question that nobody wants answered any more counts as declined.
int ResultOf(std::optional<Reply> reply) {
  if (reply == Reply::Accepted) return 1;
  return reply == Reply::Declined || !IsWanted() ? 0 : SRUI_COULD_NOT_ASK;
}

// Nothing may be thrown across the C boundary; whatever goes wrong is no consent.
int Ask(std::string_view dialog, const char* details) noexcept {
  if (details == nullptr) return SRUI_COULD_NOT_ASK;
  try {
    for (const DialogProgram& program : DialogProgram::For(t_context.terminal)) {
      std::optional<DialogConversation> conversation = Begin(program, dialog, details, t_context.withdrawal);
      if (!conversation) continue;
      const std::optional<Reply> reply = conversation->AwaitReply();
      if (reply != Reply::NoDisplay) return ResultOf(reply);
    }
  } catch (...) {
    return SRUI_COULD_NOT_ASK;
  }
  return SRUI_COULD_NOT_ASK;
}

int AddStore(const char* details) {
  return Ask(DialogWire::kAddStore, details);
}

int ReplaceStore(const char* details) {
  return Ask(DialogWire::kReplaceStore, details);
}

struct ErrorBox {
  ErrorBoxes::Place place;  // given back when the program is gone
  DialogConversation conversation;
  std::string details;
};

// Until the program is gone, or termination closes the box.
void Keep(ErrorBox& box) noexcept {
  try {
    if (box.conversation.AwaitReply() == Reply::NoDisplay) {
      ErrorBoxes::LogMessage(kNotShown, box.details.c_str());
    }
    box.conversation.AwaitEnd();
  } catch (...) {
    return;
  }
}

// The box outlives the call, so a thread of its own keeps the program's input open and reaps the program.
// What fails because the agent ends is no news.
void ErrorMessage(const char* details) {
  if (details == nullptr || IsTerminating()) return;
  try {
    ErrorBoxes::Place place = ErrorBoxes::TakePlace();
    if (place == nullptr) return ErrorBoxes::LogMessage(kTooMany, details);
    std::optional<DialogConversation> conversation =
        Begin(DialogProgram::For(t_context.terminal).back(), DialogWire::kErrorMessage, details, kNone);
    if (!conversation) return ErrorBoxes::LogMessage(kNotShown, details);
    std::thread([box = ErrorBox{std::move(place), std::move(*conversation), details}]() mutable {
      Keep(box);
    }).detach();
  } catch (...) {
    return;
  }
}

void* StoreDetailsView(const char* /*details*/) {
  return nullptr;
}

constexpr SRUIProtocol kEntryPoints{SRUI_PROTOCOL_VERSION, AddStore, ReplaceStore, ErrorMessage,
                                    StoreDetailsView};

}  // namespace

const SRUIProtocol* ServiceRecordUIPrincipalClass(const SRUIHost* host) {
  if (host == nullptr || host->version == 0) return nullptr;
  g_terminationDescriptor = host->terminationDescriptor;
  t_context = host->version < kFirstWithContext
                  ? Context()
                  : Context{host->terminalDescriptor, host->withdrawalDescriptor};
  return &kEntryPoints;
}
