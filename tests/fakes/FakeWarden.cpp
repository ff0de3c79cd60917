#include "fakes/FakeWarden.h"

#include "libs/Display/DisplayVariables.h"
#include "libs/Text/TextHelpers.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace TestSupport {
namespace {

struct Pass {
  std::uint32_t action = MORVANE_WARDEN_ACTION_NO_CREDENTIALS;
  std::wstring url;
  std::vector<std::wstring> lines;
};

struct Script {
  std::deque<Pass> passes;
  Pass current;
  std::vector<const wchar_t*> lines;
  std::vector<std::string> calls;
};

Script* g_script = nullptr;

Script& TheScript() {
  if (g_script == nullptr) throw std::logic_error("the authentication manager was not expected to be used");
  return *g_script;
}

MorvaneWardenStatus Called(std::string call) {
  TheScript().calls.push_back(std::move(call));
  return MORVANE_WARDEN_OK;
}

std::string Text(const wchar_t* text) {
  return text == nullptr ? "null" : "'" + util::narrow(text) + "'";
}

MorvaneWardenConnection* Connection() {
  return reinterpret_cast<MorvaneWardenConnection*>(&TheScript());
}
MorvaneWardenRequestContext* Context() {
  return reinterpret_cast<MorvaneWardenRequestContext*>(&TheScript());
}

void Require(bool holds) {
  if (!holds) throw std::logic_error("another handle than the one that was given out");
}

MorvaneWardenStatus Initialize() {
  return Called("Initialize");
}

MorvaneWardenStatus Uninitialize() {
  return Called("Uninitialize");
}

MorvaneWardenStatus CreateConnection(const wchar_t* name, uint32_t reserved1, uint32_t reserved2,
                                     MorvaneWardenConnection** connection) {
  *connection = Connection();
  return Called("CreateConnection " + Text(name) + " " + std::to_string(reserved1) + " " +
                std::to_string(reserved2));
}

MorvaneWardenStatus DestroyConnection(MorvaneWardenConnection* connection) {
  Require(connection == Connection());
  return Called("DestroyConnection");
}

MorvaneWardenStatus CreateRequestContext(MorvaneWardenConnection* connection, const wchar_t* storeUrl,
                                         uint32_t kind, MorvaneWardenRequestContext** context) {
  Require(connection == Connection());
  *context = Context();
  return Called("CreateRequestContext " + Text(storeUrl) + " " + std::to_string(kind));
}

MorvaneWardenStatus DestroyContext(MorvaneWardenRequestContext* context) {
  Require(context == Context());
  return Called("DestroyContext");
}

MorvaneWardenStatus ForceRoute(MorvaneWardenRequestContext* context, const MorvaneWardenRoute* route) {
  Require(context == Context());
  return Called("ForceRoute " + Text(route->GatewayName) + " " + Text(route->GatewayLocation) + " edition " +
                std::to_string(route->Edition) + " authentication " + std::to_string(route->Authentication) +
                " mode " + std::to_string(route->GatewayMode));
}

MorvaneWardenStatus SetQuestions(MorvaneWardenRequestContext* context,
                                 const MorvaneWardenQuestions* questions) {
  Require(context == Context());
  std::string call = "SetQuestions " + Text(questions->StoreName) + " " +
                     std::to_string(questions->TerminalDescriptor) + " " +
                     std::to_string(questions->WithdrawalDescriptor);
  for (const std::string& variable : Display::CopyOf(questions->Desktop)) call += " " + variable;
  return Called(call);
}

MorvaneWardenStatus Prepare2(MorvaneWardenRequestContext* context, uint32_t* action) {
  Require(context == Context());
  Script& script = TheScript();
  script.current = {};
  if (!script.passes.empty()) {
    script.current = script.passes.front();
    script.passes.pop_front();
  }
  *action = script.current.action;
  return Called("Prepare2");
}

MorvaneWardenStatus GetTranslatedUrl(MorvaneWardenRequestContext* context, const wchar_t** url) {
  Require(context == Context());
  *url = TheScript().current.url.c_str();
  return Called("GetTranslatedUrl");
}

void FreeTranslatedUrl(const wchar_t* url) {
  Require(url == TheScript().current.url.c_str());
  Called("FreeTranslatedUrl");
}

MorvaneWardenStatus GetHeaders(MorvaneWardenRequestContext* context, const wchar_t* const** lines) {
  Require(context == Context());
  Script& script = TheScript();
  script.lines.clear();
  for (const std::wstring& line : script.current.lines) script.lines.push_back(line.c_str());
  script.lines.push_back(nullptr);
  *lines = script.lines.data();
  return Called("GetHeaders");
}

void FreeHeaders(const wchar_t* const* lines) {
  Require(lines == TheScript().lines.data());
  Called("FreeHeaders");
}

MorvaneWardenStatus SetAnsweringUrl(MorvaneWardenRequestContext* context, const wchar_t* url) {
  Require(context == Context());
  return Called("SetAnsweringUrl " + Text(url));
}

MorvaneWardenStatus ReportHttpResponse(MorvaneWardenRequestContext* context, int64_t status,
                                       const wchar_t* const* lines) {
  Require(context == Context());
  std::string call = "ReportHttpResponse " + std::to_string(status);
  for (; *lines != nullptr; ++lines) call += " " + Text(*lines);
  return Called(call);
}

}  // namespace

FakeWarden::FakeWarden() {
  g_script = new Script;
}

FakeWarden::~FakeWarden() {
  delete std::exchange(g_script, nullptr);
}

void FakeWarden::Send(const std::wstring& url, const std::vector<std::wstring>& lines) {
  TheScript().passes.push_back({MORVANE_WARDEN_ACTION_SEND, url, lines});
}

void FakeWarden::EndWith(std::uint32_t action) {
  TheScript().passes.push_back({action, L"", {}});
}

std::vector<std::string> FakeWarden::Calls() const {
  return TheScript().calls;
}

std::vector<std::string> FakeWarden::PassCalls() const {
  std::vector<std::string> calls = Calls();
  const auto firstPass = std::find(calls.begin(), calls.end(), "Prepare2");
  calls.erase(calls.begin(), firstPass);
  calls.erase(std::find(calls.begin(), calls.end(), "DestroyContext"), calls.end());
  return calls;
}

ServiceRecords::WardenFunctions FakeWarden::Functions() {
  return {.Initialize = TestSupport::Initialize,
          .Uninitialize = TestSupport::Uninitialize,
          .CreateConnection = TestSupport::CreateConnection,
          .DestroyConnection = TestSupport::DestroyConnection,
          .CreateRequestContext = TestSupport::CreateRequestContext,
          .DestroyContext = TestSupport::DestroyContext,
          .ForceRoute = TestSupport::ForceRoute,
          .SetQuestions = TestSupport::SetQuestions,
          .Prepare2 = TestSupport::Prepare2,
          .GetTranslatedUrl = TestSupport::GetTranslatedUrl,
          .FreeTranslatedUrl = TestSupport::FreeTranslatedUrl,
          .GetHeaders = TestSupport::GetHeaders,
          .FreeHeaders = TestSupport::FreeHeaders,
          .SetAnsweringUrl = TestSupport::SetAnsweringUrl,
          .ReportHttpResponse = TestSupport::ReportHttpResponse};
}

}  // namespace TestSupport
