#include "libs/Warden_SDK/CredentialProgram.h"

#include "libs/CredentialWire/CredentialMessage.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Warden_SDK/Cancellation.h"
#include "libs/Warden_SDK/CredentialConversation.h"
#include "libs/Warden_SDK/WaitNotice.h"
#include "libs/Warden_SDK/WardenLog.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <utility>

namespace Warden {
namespace {

namespace Words = CredentialWire::CredentialWords;

constexpr int kNoLimit = -1;
constexpr int kChangeLimitMilliseconds = 10'000;

constexpr std::array kAuthenticationWords{Words::kRSA,          Words::kNone, Words::kDomain,
                                          Words::kDomainAndRSA, Words::kSMS,  Words::kGatewayKnows};

std::string_view AuthenticationWord(std::uint32_t authentication) {
  return authentication < kAuthenticationWords.size() ? kAuthenticationWords[authentication] : Words::kNone;
}

bool SetKey(CredentialWire::CredentialMessage& message, const CredentialKey& key) {
  return message.Set(Words::kProtocol, key.protocol) && message.Set(Words::kHost, key.host) &&
         message.Set(Words::kRealm, key.realm);
}

// A name that the message cannot carry is left out, like one that there is not.
void AddName(CredentialWire::CredentialMessage& request, std::string_view key, const std::string& name) {
  if (!name.empty()) static_cast<void>(request.Set(key, name));
}

// What the user is told besides, and where.
void AddAsking(CredentialWire::CredentialMessage& request, const CredentialQuestion& question) {
  AddName(request, Words::kStoreName, question.place.storeName);
  if (question.isGateway) AddName(request, Words::kGatewayName, question.gatewayName);
  AddName(request, Words::kUserName, question.rejectedUserName);
  if (question.place.terminal < 0) return;
  AddName(request, Words::kTerminal, std::to_string(HelperProgram::HelperProcess::kGivenDescriptor));
}

// A control character in a header line would end it, and a server may take it for anything.
bool HasControlCharacter(std::string_view text) {
  return std::ranges::any_of(text, util::IsAsciiControl);
}

void LogSecretService(const CredentialWire::CredentialMessage& reply) {
  const std::string_view state = reply.Get(Words::kSecretService);
  if (state.empty() || state == Words::kAvailable) return;
  std::string text = "Warden: the Secret Service is ";
  text += state == Words::kMissing || state == Words::kLocked ? state : std::string_view("not usable");
  text += ", no credential can be kept there";
  if (const std::string_view reason = reply.Get(Words::kReason); !reason.empty()) {
    text += ": ";
    text += reason;
  }
  WardenLog::Write(WardenLog::kFailure, text);
}

CredentialOutcome Failed(std::string_view what) {
  WardenLog::Write(WardenLog::kFailure, "Warden: the credential program " + std::string(what));
  return CredentialOutcome::Failed;
}

CredentialOutcome TakeCredentials(const CredentialWire::CredentialMessage& reply, Credentials& credentials) {
  const std::string_view userName = reply.Get(Words::kUserName);
  if (userName.empty() || HasControlCharacter(userName)) return Failed("gave no user name");
  credentials.userName = userName;
  credentials.password = CredentialWire::Secret(reply.Get(Words::kPassword));
  credentials.code = CredentialWire::Secret(reply.Get(Words::kCode));
  credentials.isStored = reply.Get(Words::kSource) == Words::kStored;
  credentials.remember = reply.Get(Words::kRemember) == Words::kYes;
  WardenLog::Write(WardenLog::kProgress, credentials.isStored ? "Warden: using the stored credential"
                                                              : "Warden: the user gave a credential");
  return CredentialOutcome::Given;
}

// The desktops to ask on. One at least: a stored credential, and a terminal of the program's own, need none.
std::vector<Display::Variables> DesktopsOf(const QuestionPlace& place) {
  if (place.terminal >= 0) return {place.desktop};
  std::vector<Display::Variables> desktops = Display::ToShowOn(place.desktop);
  if (desktops.empty()) desktops.emplace_back();
  return desktops;
}

}  // namespace

CredentialProgram::CredentialProgram(std::filesystem::path program, const Cancellation& cancellation)
    : program_(std::move(program)), cancellation_(cancellation) {}

CredentialOutcome CredentialProgram::Get(const CredentialQuestion& question, Credentials& credentials) const {
  if (IsInterrupted(question.place)) return CredentialOutcome::Interrupted;
  CredentialWire::CredentialMessage request;
  const std::string_view place = question.isGateway ? Words::kPlaceGateway : Words::kPlaceStore;
  if (!SetKey(request, question.key) || !request.Set(Words::kPlace, place) ||
      !request.Set(Words::kAuthentication, AuthenticationWord(question.authentication)) ||
      !request.Set(Words::kRejected, question.wasRejected ? Words::kYes : Words::kNo)) {
    return Failed("cannot be asked for this realm");
  }
  AddAsking(request, question);
  QuestionPlace there = question.place;
  for (const Display::Variables& desktop : DesktopsOf(question.place)) {
    there.desktop = desktop;
    const CredentialOutcome outcome = Ask(request, there, credentials);
    if (outcome != CredentialOutcome::NobodyToAsk) return outcome;
  }
  WardenLog::Write(WardenLog::kFailure, "Warden: no terminal to ask the user for a credential on");
  return CredentialOutcome::NobodyToAsk;
}

CredentialOutcome CredentialProgram::Ask(const CredentialWire::CredentialMessage& request,
                                         const QuestionPlace& place, Credentials& credentials) const {
  const std::optional<CredentialWire::CredentialMessage> reply = ReplyTo(request, place);
  const bool isInterrupted = IsInterrupted(place);
  if (!reply) return isInterrupted ? CredentialOutcome::Interrupted : Failed("did not answer");
  LogSecretService(*reply);

  const std::string_view status = reply->Get(Words::kStatus);
  if (status == Words::kOK) return TakeCredentials(*reply, credentials);
  if (status == Words::kCancelled) {
    return isInterrupted ? CredentialOutcome::Interrupted : CredentialOutcome::Cancelled;
  }
  if (status == Words::kNoTerminal) return CredentialOutcome::NobodyToAsk;
  return Failed("reports a failure");
}

std::optional<CredentialWire::CredentialMessage> CredentialProgram::ReplyTo(
    const CredentialWire::CredentialMessage& request, const QuestionPlace& place) const {
  const WaitNotice notice;
  return Exchange(Words::kGet, request, kNoLimit, place);
}

bool CredentialProgram::IsInterrupted(const QuestionPlace& place) const {
  pollfd withdrawal{place.withdrawal, POLLIN, 0};
  return cancellation_.Requested() || ::poll(&withdrawal, 1, 0) > 0;
}

void CredentialProgram::Store(const CredentialKey& key, const Credentials& credentials) const {
  Change(Words::kStore, key, credentials);
}

void CredentialProgram::Erase(const CredentialKey& key, const Credentials& credentials) const {
  Change(Words::kErase, key, credentials);
}

void CredentialProgram::Change(std::string_view action, const CredentialKey& key,
                               const Credentials& credentials) const {
  const bool stores = action == Words::kStore;
  CredentialWire::CredentialMessage request;
  const bool isComplete = SetKey(request, key) && request.Set(Words::kUserName, credentials.userName) &&
                          (!stores || request.Set(Words::kPassword, credentials.password.View()));
  std::optional<CredentialWire::CredentialMessage> reply;
  if (isComplete) reply = Exchange(action, request, kChangeLimitMilliseconds);
  if (reply) LogSecretService(*reply);
  const bool done = reply && reply->Get(Words::kStatus) == Words::kOK;
  const std::string text = std::string("Warden: the credential for ") + key.protocol + "://" + key.host;
  if (done) {
    WardenLog::Write(WardenLog::kProgress, text + (stores ? " was stored" : " was rejected and is erased"));
  } else {
    WardenLog::Write(WardenLog::kFailure, text + (stores ? " could not be stored" : " could not be erased"));
  }
}

std::optional<CredentialWire::CredentialMessage> CredentialProgram::Exchange(
    std::string_view action, const CredentialWire::CredentialMessage& request, int limitMilliseconds,
    const QuestionPlace& place) const {
  std::vector<std::string> environment;
  if (!place.desktop.empty()) environment = Display::EnvironmentOn(place.desktop);
  std::optional<HelperProgram::HelperProcess> process = HelperProgram::HelperProcess::Start(
      program_, {std::string(action)}, place.terminal, std::move(environment));
  if (!process) {
    WardenLog::Write(WardenLog::kFailure, "Warden: cannot start " + program_.string());
    return std::nullopt;
  }
  CredentialConversation conversation(std::move(*process), request.Text(), cancellation_.Descriptor(),
                                      place.withdrawal);
  return conversation.AwaitReply(limitMilliseconds);
}

}  // namespace Warden
