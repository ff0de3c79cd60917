#include "libs/Warden_SDK/NegotiateExchange.h"

#include "libs/Lifetime/UniqueHandle.h"
#include "libs/Warden_SDK/Crypto.h"
#include "libs/Warden_SDK/WardenLog.h"

#include <gssapi/gssapi.h>
#include <string.h>

#include <type_traits>

namespace Warden {

static void ReleaseName(gss_name_t name) {
  OM_uint32 minor = 0;
  gss_release_name(&minor, &name);
}

static void DeleteContext(gss_ctx_id_t context) {
  OM_uint32 minor = 0;
  gss_delete_sec_context(&minor, &context, GSS_C_NO_BUFFER);
}

static void WipeAndRelease(gss_buffer_desc* buffer) {
  OM_uint32 minor = 0;
  if (buffer->value != nullptr) ::explicit_bzero(buffer->value, buffer->length);
  gss_release_buffer(&minor, buffer);
}

using NamePtr = Lifetime::UniqueHandle<std::remove_pointer_t<gss_name_t>, ReleaseName>;
using ContextPtr = Lifetime::UniqueHandle<std::remove_pointer_t<gss_ctx_id_t>, DeleteContext>;
using BufferPtr = Lifetime::UniqueHandle<gss_buffer_desc, WipeAndRelease>;

namespace {

// SPNEGO, 1.3.6.1.5.5.2.
gss_OID_desc g_mechanism{6, const_cast<char*>("\x2b\x06\x01\x05\x05\x02")};

gss_buffer_desc BufferOf(std::string& bytes) {
  return {bytes.size(), bytes.data()};
}

std::string_view TextOf(const gss_buffer_desc& buffer) {
  return {static_cast<const char*>(buffer.value), buffer.length};
}

NamePtr ServiceName(const std::string& host) {
  std::string text = "HTTP@" + host;
  gss_buffer_desc buffer = BufferOf(text);
  gss_name_t name = GSS_C_NO_NAME;
  OM_uint32 minor = 0;
  if (gss_import_name(&minor, &buffer, GSS_C_NT_HOSTBASED_SERVICE, &name) != GSS_S_COMPLETE) return nullptr;
  return NamePtr(name);
}

void LogReason(OM_uint32 code, int kind) {
  OM_uint32 minor = 0;
  OM_uint32 more = 0;
  gss_buffer_desc text = GSS_C_EMPTY_BUFFER;
  if (gss_display_status(&minor, code, kind, &g_mechanism, &more, &text) != GSS_S_COMPLETE) return;
  const BufferPtr owned(&text);
  WardenLog::Write(WardenLog::kProgress, "Warden: Negotiate: " + std::string(TextOf(text)));
}

}  // namespace

struct NegotiateExchange::State {
  std::string host;
  NamePtr service;
  ContextPtr context;
  bool isComplete = false;
};

NegotiateExchange::NegotiateExchange(std::string host) : state_(std::make_unique<State>()) {
  state_->host = std::move(host);
}

NegotiateExchange::~NegotiateExchange() = default;

std::optional<CredentialWire::Secret> NegotiateExchange::Next(std::string_view serverToken) {
  if (state_->isComplete) return std::nullopt;
  if (!state_->service) state_->service = ServiceName(state_->host);
  std::optional<std::string> input = serverToken.empty() ? std::string() : FromBase64(serverToken);
  if (!state_->service || !input) return std::nullopt;

  gss_buffer_desc inputBuffer = BufferOf(*input);
  gss_buffer_desc output = GSS_C_EMPTY_BUFFER;
  gss_ctx_id_t context = state_->context.release();
  OM_uint32 minor = 0;
  const OM_uint32 major = gss_init_sec_context(
      &minor, GSS_C_NO_CREDENTIAL, &context, state_->service.get(), &g_mechanism, GSS_C_MUTUAL_FLAG,
      GSS_C_INDEFINITE, GSS_C_NO_CHANNEL_BINDINGS, &inputBuffer, nullptr, &output, nullptr, nullptr);
  state_->context.reset(context);
  const BufferPtr ownedOutput(&output);
  if (GSS_ERROR(major)) {
    LogReason(major, GSS_C_GSS_CODE);
    LogReason(minor, GSS_C_MECH_CODE);
    return std::nullopt;
  }
  state_->isComplete = major == GSS_S_COMPLETE;
  if (output.length == 0) return std::nullopt;
  return Base64(TextOf(output));
}

}  // namespace Warden
