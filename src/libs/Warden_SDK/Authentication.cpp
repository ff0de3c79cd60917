#include "libs/Warden_SDK/Authentication.h"

#include "libs/Warden_SDK/CancelledQuestions.h"
#include "libs/Warden_SDK/CredentialProgram.h"
#include "libs/Warden_SDK/WardenLog.h"

#include <algorithm>
#include <utility>

namespace Warden {
namespace {

constexpr int kMostTries = 3;
constexpr std::string_view kMethod = "GET";

MorvaneWardenAction ActionFor(CredentialOutcome outcome) {
  switch (outcome) {
    case CredentialOutcome::Given:
      return MORVANE_WARDEN_ACTION_SEND;
    case CredentialOutcome::Cancelled:
    case CredentialOutcome::Interrupted:
      return MORVANE_WARDEN_ACTION_CANCELLED;
    case CredentialOutcome::NobodyToAsk:
      return MORVANE_WARDEN_ACTION_NO_CREDENTIALS;
    case CredentialOutcome::Failed:
      break;
  }
  return MORVANE_WARDEN_ACTION_CREDENTIAL_PROGRAM_FAILED;
}

std::string RealmOf(const Challenge& challenge) {
  const std::string* realm = challenge.Parameter("realm");
  return realm != nullptr ? *realm : std::string();
}

const Challenge* Find(const std::vector<Challenge>& challenges, std::string_view scheme) {
  const auto found = std::find_if(challenges.begin(), challenges.end(),
                                  [scheme](const Challenge& known) { return known.scheme == scheme; });
  return found != challenges.end() ? &*found : nullptr;
}

// The one with the stronger hash; of equals the one that the server names first.
std::optional<DigestChallenge> StrongestDigest(const std::vector<Challenge>& challenges) {
  std::optional<DigestChallenge> strongest;
  for (const Challenge& challenge : challenges) {
    std::optional<DigestChallenge> digest = DigestChallenge::From(challenge);
    if (digest && (!strongest || digest->algorithm > strongest->algorithm)) strongest = std::move(digest);
  }
  return strongest;
}

void LogChoice(const Site& site, std::string_view scheme) {
  std::string text = "Warden: answering " + site.url.scheme + "://" + site.url.authority + " with ";
  WardenLog::Write(WardenLog::kProgress, text += scheme);
}

}  // namespace

void Authentication::Challenged(std::vector<Challenge> challenges, std::string_view target) {
  challenges_ = std::move(challenges);
  pending_ = true;
  if (credentials_ && !IsDigestOfAnotherTarget(target)) JudgeCredentials();
}

bool Authentication::IsDigestOfAnotherTarget(std::string_view target) const {
  return credentials_ && scheme_ == Scheme::Digest && digestTarget_ != target;
}

void Authentication::JudgeCredentials() {
  if (SaysStale()) return;
  const bool sameRealm = std::any_of(challenges_.begin(), challenges_.end(), [this](const Challenge& known) {
    return known.scheme != "negotiate" && RealmOf(known) == key_.realm;
  });
  if (sameRealm) {
    WardenLog::Write(WardenLog::kFailure, "Warden: the credential was rejected");
    if (credentials_->isStored) program_.Erase(key_, *credentials_);
    return TakeBackCredentials();
  }
  credentials_.reset();
}

// Most often it is only the password that was wrong.
void Authentication::TakeBackCredentials() {
  std::string userName = std::move(credentials_->userName);
  DropCredentials();
  rejectedUserName_ = std::move(userName);
}

void Authentication::DropCredentials() {
  wasRejected_ = true;
  rejectedUserName_.clear();
  credentials_.reset();
}

// The password was right, only the nonce was too old.
bool Authentication::SaysStale() const {
  return scheme_ == Scheme::Digest &&
         std::any_of(challenges_.begin(), challenges_.end(), [this](const Challenge& known) {
           const std::optional<DigestChallenge> digest = DigestChallenge::From(known);
           return digest && digest->isStale && digest->realm == key_.realm;
         });
}

MorvaneWardenAction Authentication::Prepare(const Site& site) {
  if (std::exchange(pending_, false)) {
    const MorvaneWardenAction action = Choose(site);
    if (action != MORVANE_WARDEN_ACTION_SEND) return action;
  }
  return MakeHeaderLine(site) ? MORVANE_WARDEN_ACTION_SEND : MORVANE_WARDEN_ACTION_INTERNAL_ERROR;
}

MorvaneWardenAction Authentication::Choose(const Site& site) {
  if (!site.url.IsSecure()) {
    WardenLog::Write(WardenLog::kFailure, "Warden: no challenge is answered without TLS");
    return MORVANE_WARDEN_ACTION_UNSUPPORTED_SCHEME;
  }
  if (TryNegotiate(site)) return MORVANE_WARDEN_ACTION_SEND;
  if (ChoosePasswordScheme(site)) return ObtainCredentials(site);
  if (Find(challenges_, "negotiate") != nullptr) return MORVANE_WARDEN_ACTION_NO_CREDENTIALS;
  WardenLog::Write(WardenLog::kFailure, "Warden: no challenge is of a scheme that can be served");
  return MORVANE_WARDEN_ACTION_UNSUPPORTED_SCHEME;
}

bool Authentication::TryNegotiate(const Site& site) {
  const Challenge* const challenge = Find(challenges_, "negotiate");
  if (challenge == nullptr || negotiateFailed_) return false;
  // A server that begins anew has refused what it got.
  const bool refused = negotiate_ && challenge->token.empty();
  if (!negotiate_) negotiate_ = std::make_unique<NegotiateExchange>(site.url.Host());
  std::optional<CredentialWire::Secret> token;
  if (!refused) token = negotiate_->Next(challenge->token);
  if (!token) {
    WardenLog::Write(WardenLog::kProgress, refused ? "Warden: the ticket was refused"
                                                   : "Warden: no ticket for Negotiate, it is passed over");
    negotiateFailed_ = true;
    return false;
  }
  scheme_ = Scheme::Negotiate;
  credentials_.reset();
  LogChoice(site, "Negotiate");
  CredentialWire::Secret value("Negotiate ");
  value.Append(token->View());
  SetHeaderLine(value.View());
  return true;
}

bool Authentication::ChoosePasswordScheme(const Site& site) {
  digest_ = StrongestDigest(challenges_);
  const Challenge* const basic = Find(challenges_, "basic");
  std::string realm;
  if (digest_) {
    scheme_ = Scheme::Digest;
    realm = digest_->realm;
    LogChoice(site, digest_->algorithm == HashAlgorithm::SHA256 ? "Digest SHA-256" : "Digest MD5");
  } else if (basic != nullptr) {
    scheme_ = Scheme::Basic;
    realm = RealmOf(*basic);
    LogChoice(site, "Basic");
  } else {
    return false;
  }
  CredentialKey key{site.url.scheme, site.url.ServerKey(), std::move(realm)};
  if (key != key_) {
    credentials_.reset();
    wasRejected_ = false;
    rejectedUserName_.clear();
  }
  key_ = std::move(key);
  return true;
}

MorvaneWardenAction Authentication::ObtainCredentials(const Site& site) {
  while (!credentials_) {
    const MorvaneWardenAction action = AskOnce(site);
    if (action != MORVANE_WARDEN_ACTION_SEND) return action;
    if (!CredentialsFit()) {
      WardenLog::Write(WardenLog::kFailure, "Warden: Basic cannot carry a user name with a colon");
      DropCredentials();
    }
  }
  return MORVANE_WARDEN_ACTION_SEND;
}

MorvaneWardenAction Authentication::AskOnce(const Site& site) {
  if (CancelledQuestions::OfThisThread().Holds(key_)) {
    WardenLog::Write(WardenLog::kProgress, "Warden: the user has cancelled this question before");
    return MORVANE_WARDEN_ACTION_CANCELLED;
  }
  if (tries_ == kMostTries) return MORVANE_WARDEN_ACTION_TOO_MANY_TRIES;
  ++tries_;
  Credentials credentials;
  const CredentialOutcome outcome = program_.Get(
      {key_, site.isGateway, site.authentication, wasRejected_, gatewayName_, rejectedUserName_, place_},
      credentials);
  if (outcome == CredentialOutcome::Cancelled) CancelledQuestions::OfThisThread().Add(key_);
  if (outcome == CredentialOutcome::Given) credentials_ = std::move(credentials);
  return ActionFor(outcome);
}

bool Authentication::CredentialsFit() const {
  return scheme_ != Scheme::Basic || credentials_->userName.find(':') == std::string::npos;
}

bool Authentication::MakeHeaderLine(const Site& site) {
  if (!credentials_) return true;
  // A passcode is the password and the code in one.
  CredentialWire::Secret password(credentials_->password.View());
  password.Append(credentials_->code.View());
  if (scheme_ == Scheme::Digest) {
    const std::optional<CredentialWire::Secret> value = DigestValue(site, password.View());
    if (value) SetHeaderLine(value->View());
    return value.has_value();
  }
  CredentialWire::Secret pair(credentials_->userName);
  pair.Append(":");
  pair.Append(password.View());
  CredentialWire::Secret value("Basic ");
  value.Append(Base64(pair.View()).View());
  SetHeaderLine(value.View());
  return true;
}

std::optional<CredentialWire::Secret> Authentication::DigestValue(const Site& site,
                                                                  std::string_view password) {
  if (countedNonce_ != digest_->nonce) {
    const std::optional<std::string> random = RandomDigits();
    if (!random) return std::nullopt;
    clientNonce_ = *random;
    countedNonce_ = digest_->nonce;
    nonceCount_ = 0;
  }
  ++nonceCount_;
  digestTarget_ = site.url.target;
  return DigestAnswer(*digest_,
                      {kMethod, digestTarget_, credentials_->userName, password, clientNonce_, nonceCount_});
}

void Authentication::SetHeaderLine(std::string_view value) {
  CredentialWire::Secret line("Authorization: ");
  line.Append(value);
  headerLine_ = std::move(line);
}

void Authentication::Accepted() {
  if (credentials_ && credentials_->remember && !credentials_->isStored) program_.Store(key_, *credentials_);
  credentials_.reset();
  headerLine_ = CredentialWire::Secret();
}

}  // namespace Warden
