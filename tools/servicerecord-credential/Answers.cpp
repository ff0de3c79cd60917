#include "Answers.h"

#include "CredentialStore.h"
#include "LogOnPrompt.h"
#include "LogOnWindow.h"
#include "libs/Terminal/Terminal.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <system_error>
#include <utility>

namespace Credential {
namespace {

namespace Words = CredentialWire::CredentialWords;
using State = CredentialStore::State;
using Outcome = LogOnReply::Outcome;

// Whether the reply is complete: a value with a line feed or a NUL cannot be sent.
CredentialWire::CredentialMessage WithStatus(CredentialWire::CredentialMessage reply,
                                             std::string_view status) {
  static_cast<void>(reply.Set(Words::kStatus, status));
  return reply;
}

std::string_view WordFor(State state) {
  switch (state) {
    case State::Available:
      return Words::kAvailable;
    case State::Missing:
      return Words::kMissing;
    case State::Locked:
      return Words::kLocked;
    case State::Failed:
      break;
  }
  return Words::kFailed;
}

void Describe(const CredentialStore& store, CredentialWire::CredentialMessage& reply) {
  std::string reason = store.Reason();
  std::replace(reason.begin(), reason.end(), '\n', ' ');
  static_cast<void>(reply.Set(Words::kSecretService, WordFor(store.ServiceState())));
  if (!reason.empty()) static_cast<void>(reply.Set(Words::kReason, reason));
}

CredentialStore::Place PlaceOf(const CredentialWire::CredentialMessage& request) {
  return {std::string(request.Get(Words::kProtocol)), std::string(request.Get(Words::kHost)),
          std::string(request.Get(Words::kRealm))};
}

bool NeedsCode(std::string_view authentication) {
  return authentication == Words::kRSA || authentication == Words::kDomainAndRSA ||
         authentication == Words::kSMS;
}

// The service is everybody's: what another program has put there may hold a line feed at its end.
bool IsSendable(const CredentialStore::Login& login) {
  CredentialWire::CredentialMessage message;
  return message.Set(Words::kUserName, login.userName) &&
         message.Set(Words::kPassword, login.password.View());
}

CredentialWire::CredentialMessage Given(CredentialWire::CredentialMessage reply, std::string_view source,
                                        const LogOn& logOn) {
  const bool isSendable = reply.Set(Words::kSource, source) && reply.Set(Words::kUserName, logOn.userName) &&
                          reply.Set(Words::kPassword, logOn.password.View()) &&
                          reply.Set(Words::kCode, logOn.code.View()) &&
                          reply.Set(Words::kRemember, logOn.remember ? Words::kYes : Words::kNo);
  if (isSendable) return WithStatus(std::move(reply), Words::kOK);
  CredentialWire::CredentialMessage failure;
  return WithStatus(std::move(failure), Words::kFailed);
}

std::string_view WordFor(Outcome outcome) {
  switch (outcome) {
    case Outcome::Answered:
      return Words::kOK;
    case Outcome::Cancelled:
      return Words::kCancelled;
    case Outcome::NoDisplay:
      return Words::kNoTerminal;
    case Outcome::Failed:
      break;
  }
  return Words::kFailed;
}

// Nothing when the text is no number of a terminal's descriptor.
std::optional<Terminal::Terminal> TerminalOf(std::string_view number, int interruption) {
  int descriptor = -1;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), descriptor);
  if (error != std::errc() || end != number.data() + number.size()) return std::nullopt;
  return Terminal::Terminal::OpenAgain(descriptor, interruption);
}

LogOnReply AskOn(std::optional<Terminal::Terminal> terminal, const LogOnQuestion& question) {
  if (!terminal) return {Outcome::NoDisplay, {}};
  std::optional<LogOn> logOn;
  if (terminal->TakeTurn()) logOn = AskToLogOn(*terminal, question);
  if (!logOn) return {Outcome::Cancelled, {}};
  return {Outcome::Answered, std::move(*logOn)};
}

// On the terminal that is given, else in a window, else on a terminal that can be found.
LogOnReply Ask(const LogOnQuestion& question, std::string_view givenTerminal, int interruption) {
  if (!givenTerminal.empty()) {
    return AskOn(TerminalOf(givenTerminal, interruption), question);
  }
  LogOnReply reply = AskInWindow(question, interruption);
  if (reply.outcome != Outcome::NoDisplay) return reply;
  return AskOn(Terminal::Terminal::Open(interruption), question);
}

CredentialWire::CredentialMessage AnswerGet(const CredentialWire::CredentialMessage& request,
                                            int interruption) {
  const CredentialStore::Place place = PlaceOf(request);
  const bool wasRejected = request.Get(Words::kRejected) == Words::kYes;
  CredentialStore store;
  // A rejected one is looked up as well: that tells whether the next one can be kept.
  std::optional<CredentialStore::Login> stored = store.Find(place);
  if (wasRejected || (stored && !IsSendable(*stored))) stored.reset();
  CredentialWire::CredentialMessage reply;
  Describe(store, reply);

  LogOnQuestion question;
  question.needsCode = NeedsCode(request.Get(Words::kAuthentication));
  if (stored && !question.needsCode) {
    const LogOn known{std::move(stored->userName), std::move(stored->password), {}, false};
    return Given(std::move(reply), Words::kStored, known);
  }
  const std::string server = place.protocol + "://" + place.host;
  question.server = server;
  question.realm = place.realm;
  question.isGateway = request.Get(Words::kPlace) == Words::kPlaceGateway;
  question.wasRejected = wasRejected;
  question.canRemember = store.ServiceState() == State::Available;
  if (stored) question.knownUserName = stored->userName;

  question.storeName = request.Get(Words::kStoreName);
  question.gatewayName = request.Get(Words::kGatewayName);
  if (wasRejected) question.rejectedUserName = request.Get(Words::kUserName);

  LogOnReply asked = Ask(question, request.Get(Words::kTerminal), interruption);
  if (asked.outcome != Outcome::Answered) return WithStatus(std::move(reply), WordFor(asked.outcome));
  if (stored) asked.logOn.password = std::move(stored->password);
  return Given(std::move(reply), stored ? Words::kStored : Words::kAsked, asked.logOn);
}

CredentialWire::CredentialMessage AnswerStore(const CredentialWire::CredentialMessage& request) {
  CredentialStore store;
  const CredentialStore::Login login{std::string(request.Get(Words::kUserName)),
                                     CredentialWire::Secret(request.Get(Words::kPassword))};
  const bool done = store.Store(PlaceOf(request), login);
  CredentialWire::CredentialMessage reply;
  Describe(store, reply);
  return WithStatus(std::move(reply), done ? Words::kOK : Words::kFailed);
}

CredentialWire::CredentialMessage AnswerErase(const CredentialWire::CredentialMessage& request) {
  CredentialStore store;
  const bool done = store.Erase(PlaceOf(request), std::string(request.Get(Words::kUserName)));
  CredentialWire::CredentialMessage reply;
  Describe(store, reply);
  return WithStatus(std::move(reply), done ? Words::kOK : Words::kFailed);
}

}  // namespace

CredentialWire::CredentialMessage AnswerTo(std::string_view action,
                                           const CredentialWire::CredentialMessage& request,
                                           int interruption) {
  const bool namesPlace = !request.Get(Words::kProtocol).empty() && !request.Get(Words::kHost).empty();
  const bool namesUser = !request.Get(Words::kUserName).empty();
  if (namesPlace && action == Words::kGet) return AnswerGet(request, interruption);
  if (namesPlace && namesUser && action == Words::kStore) return AnswerStore(request);
  if (namesPlace && namesUser && action == Words::kErase) return AnswerErase(request);
  return WithStatus({}, Words::kBadRequest);
}

}  // namespace Credential
