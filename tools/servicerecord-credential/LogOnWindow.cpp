#include "LogOnWindow.h"

#include "libs/CredentialWire/CredentialMessage.h"
#include "libs/DialogWire/DialogWire.h"
#include "libs/Display/DisplayVariables.h"
#include "libs/Files/Bundle.h"
#include "libs/HelperProgram/HelperConversation.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/SRUIProtocol/PlugInDescription.h"

#include <string.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <string>
#include <utility>

namespace Credential {

namespace {

using DialogWire::Reply;
using Outcome = LogOnReply::Outcome;

std::filesystem::path WindowProgram() {
  return Files::Bundle::Main().BuiltInPlugInsPath() / SRUI::PlugInDescription::kFolderName /
         DialogWire::kWindowProgram;
}

std::string RequestFor(const LogOnQuestion& question) {
  const PropertyList::Dictionary details{
      {"Server", std::string(question.server)},
      {"Realm", std::string(question.realm)},
      {"Place", question.isGateway ? "gateway" : "store"},
      {"StoreName", std::string(question.storeName)},
      {"GatewayName", std::string(question.gatewayName)},
      {"WasRejected", question.wasRejected},
      {"NeedsCode", question.needsCode},
      {"CanRemember", question.canRemember},
      {"KnownUserName", std::string(question.knownUserName)},
      {"RejectedUserName", std::string(question.rejectedUserName)},
  };
  return DialogWire::RequestFor(DialogWire::kLogOn, PropertyList::Write(details));
}

void ReadInto(CredentialWire::Secret& text, HelperProgram::HelperConversation& conversation) {
  std::array<char, 4096> buffer;
  const std::size_t count = conversation.ReadSome(buffer);
  text.Append({buffer.data(), count});
  ::explicit_bzero(buffer.data(), buffer.size());
}

LogOn LogOnOf(const CredentialWire::CredentialMessage& answer, const LogOnQuestion& question) {
  namespace Words = CredentialWire::CredentialWords;
  LogOn logOn;
  logOn.userName = question.knownUserName.empty() ? answer.Get(Words::kUserName) : question.knownUserName;
  logOn.password = CredentialWire::Secret(answer.Get(Words::kPassword));
  logOn.code = CredentialWire::Secret(answer.Get(Words::kCode));
  logOn.remember = answer.Get(Words::kRemember) == Words::kYes;
  return logOn;
}

// Nothing as long as the reply is not whole.
std::optional<LogOnReply> ReplyIn(std::string_view text, const LogOnQuestion& question) {
  const std::size_t end = text.find('\n');
  if (end == std::string_view::npos) return std::nullopt;
  const std::optional<Reply> reply = DialogWire::ReplyOf(text.substr(0, end));
  if (reply == Reply::Declined) return LogOnReply{Outcome::Cancelled, {}};
  if (reply == Reply::NoDisplay) return LogOnReply{Outcome::NoDisplay, {}};
  if (reply != Reply::Accepted) return LogOnReply{};
  text.remove_prefix(end + 1);
  if (!CredentialWire::CredentialMessage::LengthOf(text)) return std::nullopt;
  const std::optional<CredentialWire::CredentialMessage> answer =
      CredentialWire::CredentialMessage::Parse(text);
  if (!answer) return LogOnReply{};
  return LogOnReply{Outcome::Answered, LogOnOf(*answer, question)};
}

}  // namespace

LogOnReply AskInWindow(const LogOnQuestion& question, int interruption) {
  if (Display::OfThisProcess().empty()) return {Outcome::NoDisplay, {}};
  std::optional<HelperProgram::HelperProcess> program = HelperProgram::HelperProcess::Start(WindowProgram());
  if (!program) return {Outcome::NoDisplay, {}};
  HelperProgram::HelperConversation conversation(std::move(*program), interruption, STDIN_FILENO);
  const std::string request = RequestFor(question);
  CredentialWire::Secret text;
  while (conversation.Continue(request)) {
    ReadInto(text, conversation);
    if (std::optional<LogOnReply> reply = ReplyIn(text.View(), question)) return std::move(*reply);
    if (conversation.IsOver() || text.View().size() > CredentialWire::CredentialMessage::kMaximumBytes)
      return {};
  }
  return {Outcome::Cancelled, {}};
}

}  // namespace Credential
