#include "libs/Warden_SDK/MorvaneWarden.h"

#include "libs/Lifetime/NoDestructor.h"
#include "libs/Lifetime/UniqueHandle.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Warden_SDK/Cancellation.h"
#include "libs/Warden_SDK/CredentialProgram.h"
#include "libs/Warden_SDK/RequestContext.h"
#include "libs/Warden_SDK/WaitNotice.h"
#include "libs/Warden_SDK/WardenLog.h"

#include <dlfcn.h>
#include <string.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

struct MorvaneWardenConnection {
  std::string name;
};

struct MorvaneWardenRequestContext {
  Warden::RequestContext request;
};

namespace {

using Warden::RequestContext;

constexpr const char* kCredentialProgram = "servicerecord-credential";

// The credential program lies beside the library: this copy of it, so an address that no other copy offers.
std::filesystem::path CredentialProgramPath() {
  Dl_info library{};
  if (::dladdr(reinterpret_cast<const void*>(&CredentialProgramPath), &library) == 0) return {};
  return std::filesystem::absolute(library.dli_fname).parent_path() / kCredentialProgram;
}

struct Library {
  Warden::Cancellation cancellation;
  Warden::CredentialProgram program{CredentialProgramPath(), cancellation};
  std::atomic<int> users{0};
};

// Never destroyed: at the end of the process a thread may still be in a request. Throws std::system_error
// when it cannot be made, which the next call tries again.
Library& TheLibrary() {
  static Lifetime::NoDestructor<Library> library;
  return *library;
}

bool IsInitialized() {
  return TheLibrary().users > 0;
}

// Nothing may be thrown across the C boundary.
template <typename Body>
MorvaneWardenStatus Guarded(Body body) noexcept {
  try {
    return body();
  } catch (...) {
    return MORVANE_WARDEN_OUT_OF_RESOURCES;
  }
}

std::size_t CountOf(const wchar_t* const* lines) {
  std::size_t count = 0;
  while (lines[count] != nullptr) ++count;
  return count;
}

// Frees a text of CopyOf.
void WipeAndFree(const wchar_t* text) noexcept {
  if (text == nullptr) return;
  auto* const own = const_cast<wchar_t*>(text);
  ::explicit_bzero(own, std::wcslen(own) * sizeof(wchar_t));
  delete[] own;
}

using TextPtr = Lifetime::UniqueHandle<const wchar_t[], WipeAndFree>;

TextPtr CopyOf(std::string_view utf8) {
  std::wstring wide = util::widen(utf8);
  auto* const copy = new (std::nothrow) wchar_t[wide.size() + 1];
  if (copy != nullptr) std::copy_n(wide.c_str(), wide.size() + 1, copy);
  for (volatile wchar_t& character : wide) character = L'\0';  // volatile, or it could be left out
  if (copy == nullptr) throw std::bad_alloc();
  return TextPtr(copy);
}

}  // namespace

void MorvaneWarden_SetLogFunction(MorvaneWardenLogFunction function) {
  Warden::WardenLog::SetFunction(function);
}

void MorvaneWarden_SetWaitFunction(MorvaneWardenWaitFunction function) {
  Warden::WaitNotice::SetFunction(function);
}

MorvaneWardenStatus MorvaneWarden_Initialize(void) {
  return Guarded([] {
    ++TheLibrary().users;
    return MORVANE_WARDEN_OK;
  });
}

MorvaneWardenStatus MorvaneWarden_Uninitialize(void) {
  return Guarded([] {
    std::atomic<int>& users = TheLibrary().users;
    int before = users;
    while (before > 0 && !users.compare_exchange_weak(before, before - 1)) {
    }
    return before > 0 ? MORVANE_WARDEN_OK : MORVANE_WARDEN_NOT_INITIALIZED;
  });
}

void MorvaneWarden_CancelRequests(void) {
  static_cast<void>(Guarded([] {
    TheLibrary().cancellation.Request();
    return MORVANE_WARDEN_OK;
  }));
}

MorvaneWardenStatus MorvaneWarden_CreateConnection(const wchar_t* name, uint32_t reserved1,
                                                   uint32_t reserved2, MorvaneWardenConnection** connection) {
  if (connection == nullptr) return MORVANE_WARDEN_BAD_PARAMETER;
  *connection = nullptr;
  if (name == nullptr || reserved1 != 0 || reserved2 != 0) return MORVANE_WARDEN_BAD_PARAMETER;
  return Guarded([&] {
    if (!IsInitialized()) return MORVANE_WARDEN_NOT_INITIALIZED;
    *connection = new MorvaneWardenConnection{util::narrow(name)};
    return MORVANE_WARDEN_OK;
  });
}

MorvaneWardenStatus MorvaneWarden_DestroyConnection(MorvaneWardenConnection* connection) {
  const std::unique_ptr<MorvaneWardenConnection> owned(connection);
  return MORVANE_WARDEN_OK;
}

MorvaneWardenStatus MorvaneWarden_CreateRequestContext(MorvaneWardenConnection* connection,
                                                       const wchar_t* storeUrl, uint32_t kind,
                                                       MorvaneWardenRequestContext** context) {
  if (context == nullptr) return MORVANE_WARDEN_BAD_PARAMETER;
  *context = nullptr;
  if (connection == nullptr || storeUrl == nullptr || kind != MORVANE_WARDEN_REQUEST_GET) {
    return MORVANE_WARDEN_BAD_PARAMETER;
  }
  return Guarded([&] {
    if (!IsInitialized()) return MORVANE_WARDEN_NOT_INITIALIZED;
    std::optional<Warden::Url> url = Warden::Url::Parse(util::narrow(storeUrl));
    if (!url) return MORVANE_WARDEN_BAD_PARAMETER;
    Warden::WardenLog::Write(Warden::WardenLog::kProgress,
                             "Warden: " + connection->name + ": a request for " + url->authority);
    const Library& library = TheLibrary();
    *context = new MorvaneWardenRequestContext{
        RequestContext(std::move(*url), library.program, library.cancellation)};
    return MORVANE_WARDEN_OK;
  });
}

MorvaneWardenStatus MorvaneWarden_DestroyContext(MorvaneWardenRequestContext* context) {
  const std::unique_ptr<MorvaneWardenRequestContext> owned(context);
  return MORVANE_WARDEN_OK;
}

MorvaneWardenStatus MorvaneWarden_ForceRoute(MorvaneWardenRequestContext* context,
                                             const MorvaneWardenRoute* route) {
  if (context == nullptr || route == nullptr) return MORVANE_WARDEN_BAD_PARAMETER;
  return Guarded(
      [&] { return context->request.ForceRoute(*route) ? MORVANE_WARDEN_OK : MORVANE_WARDEN_BAD_PARAMETER; });
}

MorvaneWardenStatus MorvaneWarden_SetQuestions(MorvaneWardenRequestContext* context,
                                               const MorvaneWardenQuestions* questions) {
  if (context == nullptr || questions == nullptr) return MORVANE_WARDEN_BAD_PARAMETER;
  return Guarded([&] {
    context->request.SetQuestions(*questions);
    return MORVANE_WARDEN_OK;
  });
}

MorvaneWardenStatus MorvaneWarden_Prepare2(MorvaneWardenRequestContext* context, uint32_t* action) {
  if (action == nullptr) return MORVANE_WARDEN_BAD_PARAMETER;
  *action = MORVANE_WARDEN_ACTION_BAD_PARAMETER;
  if (context == nullptr) return MORVANE_WARDEN_BAD_PARAMETER;
  *action = MORVANE_WARDEN_ACTION_INTERNAL_ERROR;
  return Guarded([&] {
    if (!IsInitialized()) return MORVANE_WARDEN_NOT_INITIALIZED;
    *action = context->request.Prepare();
    return MORVANE_WARDEN_OK;
  });
}

MorvaneWardenStatus MorvaneWarden_GetTranslatedUrl(MorvaneWardenRequestContext* context,
                                                   const wchar_t** url) {
  if (url == nullptr) return MORVANE_WARDEN_BAD_PARAMETER;
  *url = nullptr;
  if (context == nullptr) return MORVANE_WARDEN_BAD_PARAMETER;
  return Guarded([&] {
    if (!context->request.IsPrepared()) return MORVANE_WARDEN_NOTHING_PREPARED;
    *url = CopyOf(context->request.TranslatedUrl()).release();
    return MORVANE_WARDEN_OK;
  });
}

void MorvaneWarden_FreeTranslatedUrl(const wchar_t* url) {
  WipeAndFree(url);
}

MorvaneWardenStatus MorvaneWarden_GetHeaders(MorvaneWardenRequestContext* context,
                                             const wchar_t* const** lines) {
  if (lines == nullptr) return MORVANE_WARDEN_BAD_PARAMETER;
  *lines = nullptr;
  if (context == nullptr) return MORVANE_WARDEN_BAD_PARAMETER;
  return Guarded([&] {
    if (!context->request.IsPrepared()) return MORVANE_WARDEN_NOTHING_PREPARED;
    constexpr std::size_t kMostLines = 1;
    auto list = std::make_unique<const wchar_t*[]>(kMostLines + 1);
    const std::string_view line = context->request.HeaderLine();
    if (!line.empty()) list[0] = CopyOf(line).release();
    *lines = list.release();
    return MORVANE_WARDEN_OK;
  });
}

void MorvaneWarden_FreeHeaders(const wchar_t* const* lines) {
  if (lines == nullptr) return;
  std::for_each_n(lines, CountOf(lines), WipeAndFree);
  delete[] lines;
}

MorvaneWardenStatus MorvaneWarden_SetAnsweringUrl(MorvaneWardenRequestContext* context, const wchar_t* url) {
  if (context == nullptr || url == nullptr) return MORVANE_WARDEN_BAD_PARAMETER;
  return Guarded([&] {
    if (!context->request.IsPrepared()) return MORVANE_WARDEN_NOTHING_PREPARED;
    std::optional<Warden::Url> answering = Warden::Url::Parse(util::narrow(url));
    const bool isReadable = answering.has_value();
    context->request.SetAnsweringUrl(std::move(answering));
    return isReadable ? MORVANE_WARDEN_OK : MORVANE_WARDEN_BAD_PARAMETER;
  });
}

MorvaneWardenStatus MorvaneWarden_ReportHttpResponse(MorvaneWardenRequestContext* context, int64_t status,
                                                     const wchar_t* const* lines) {
  if (context == nullptr) return MORVANE_WARDEN_BAD_PARAMETER;
  return Guarded([&] {
    if (!context->request.IsPrepared()) return MORVANE_WARDEN_NOTHING_PREPARED;
    context->request.Report(status, lines);
    return MORVANE_WARDEN_OK;
  });
}
