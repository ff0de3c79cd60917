#include "DialogConversation.h"
#include "DialogWire.h"
#include "ErrorBoxes.h"
#include "libs/HelperProgram/HelperProcess.h"
#include "libs/SRUIProtocol/SRUIProtocol.h"

#include <dlfcn.h>
#include <poll.h>

#include <atomic>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace {

constexpr const char* kDialogProgram = "servicerecord-dialog";
constexpr std::string_view kTooMany = "Too many error messages are open for this one";
constexpr std::string_view kNotShown = "This error message could not be shown";

std::atomic<int> g_terminationDescriptor{-1};

bool IsTerminating() {
  pollfd termination{g_terminationDescriptor.load(), POLLIN, 0};
  return ::poll(&termination, 1, 0) > 0;
}

// The dialog program lies beside the module.
std::optional<std::filesystem::path> DialogProgramPath() {
  Dl_info module{};
  if (::dladdr(reinterpret_cast<const void*>(&ServiceRecordUIPrincipalClass), &module) == 0)
    return std::nullopt;
  return std::filesystem::path(module.dli_fname).parent_path() / kDialogProgram;
}

std::optional<DialogConversation> Begin(std::string_view dialog, const char* details) {
  const std::optional<std::filesystem::path> path = DialogProgramPath();
  if (!path || details == nullptr) return std::nullopt;
  std::optional<HelperProcess> program = HelperProcess::Start(*path);
  if (!program) return std::nullopt;
  return std::optional<DialogConversation>(std::in_place, std::move(*program),
                                           DialogWire::RequestFor(dialog, details),
                                           g_terminationDescriptor.load());
}

// Nothing may be thrown across the C boundary; whatever goes wrong is no consent.
int Ask(std::string_view dialog, const char* details) noexcept {
  try {
    std::optional<DialogConversation> conversation = Begin(dialog, details);
    return conversation && conversation->AwaitReply() == DialogWire::Reply::Accepted ? 1 : 0;
  } catch (...) {
    return 0;
  }
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
    if (box.conversation.AwaitReply() == DialogWire::Reply::NoDisplay) {
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
    std::optional<DialogConversation> conversation = Begin(DialogWire::kErrorMessage, details);
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
  if (host == nullptr || host->version < SRUI_PROTOCOL_VERSION) return nullptr;
  g_terminationDescriptor = host->terminationDescriptor;
  return &kEntryPoints;
}
