#include "libs/Warden_SDK/RequestContext.h"

#include "libs/Text/TextHelpers.h"
#include "libs/Warden_SDK/Cancellation.h"
#include "libs/Warden_SDK/CredentialProgram.h"
#include "libs/Warden_SDK/ResponseLines.h"
#include "libs/Warden_SDK/WardenLog.h"

#include <utility>
#include <vector>

namespace Warden {
namespace {

// Three tries, a few legs of Negotiate and some stale nonces fit in.
constexpr int kMostPasses = 16;
constexpr std::int64_t kOK = 200;
constexpr std::int64_t kBadRequest = 400;
constexpr std::int64_t kUnauthorized = 401;
constexpr std::int64_t kProxyAuthenticationRequired = 407;
constexpr std::uint32_t kLastEdition = 2;
constexpr std::uint32_t kLastAuthentication = 5;

std::string Narrow(const wchar_t* text) {
  return text != nullptr ? util::narrow(text) : std::string();
}

bool Rewrites(std::uint32_t mode) {
  return mode == MORVANE_WARDEN_MODE_SG_REWRITE || mode == MORVANE_WARDEN_MODE_REWRITE;
}

bool IsInRange(const MorvaneWardenRoute& route) {
  return route.Edition <= kLastEdition && route.Authentication <= kLastAuthentication &&
         route.GatewayMode <= MORVANE_WARDEN_MODE_VPN;
}

std::string ServerOf(const Url& url) {
  return url.scheme + "://" + url.ServerKey();
}

}  // namespace

RequestContext::RequestContext(Url storeUrl, const CredentialProgram& program,
                               const Cancellation& cancellation)
    : storeUrl_(std::move(storeUrl)),
      site_{storeUrl_},
      cancellation_(cancellation),
      authentication_(program) {}

bool RequestContext::ForceRoute(const MorvaneWardenRoute& route) {
  const std::optional<Url> gateway = Url::Parse(Narrow(route.GatewayLocation));
  std::optional<Url> translated;
  if (gateway && IsInRange(route)) translated = ThroughGateway(*gateway, storeUrl_);
  if (!translated) {
    WardenLog::Write(WardenLog::kFailure, "Warden: no way through the gateway " + Narrow(route.GatewayName));
    last_ = MORVANE_WARDEN_ACTION_BAD_PARAMETER;
    return false;
  }
  if (Rewrites(route.GatewayMode)) site_ = {*translated, true, route.Authentication};
  authentication_.SetGatewayName(Narrow(route.GatewayName));
  return true;
}

void RequestContext::SetQuestions(const MorvaneWardenQuestions& questions) {
  authentication_.SetPlace({Narrow(questions.StoreName), questions.TerminalDescriptor,
                            questions.WithdrawalDescriptor, Display::CopyOf(questions.Desktop)});
}

MorvaneWardenAction RequestContext::Prepare() {
  isPrepared_ = false;
  wasRedirected_ = false;
  if (!last_) {
    const MorvaneWardenAction action = PrepareRequest();
    isPrepared_ = action == MORVANE_WARDEN_ACTION_SEND;
    if (isPrepared_) return action;
    last_ = action;
  }
  WardenLog::Write(*last_ == MORVANE_WARDEN_ACTION_DONE ? WardenLog::kProgress : WardenLog::kFailure,
                   "Warden: the request ends with action " + std::to_string(*last_));
  return *last_;
}

MorvaneWardenAction RequestContext::PrepareRequest() {
  if (cancellation_.Requested()) return MORVANE_WARDEN_ACTION_CANCELLED;
  if (++passes_ > kMostPasses) return MORVANE_WARDEN_ACTION_TOO_MANY_TRIES;
  const MorvaneWardenAction action = authentication_.Prepare(site_);
  if (action != MORVANE_WARDEN_ACTION_SEND) return action;
  return cancellation_.Requested() ? MORVANE_WARDEN_ACTION_CANCELLED : MORVANE_WARDEN_ACTION_SEND;
}

std::string RequestContext::TranslatedUrl() const {
  return site_.url.scheme + "://" + site_.url.authority + site_.url.target;
}

void RequestContext::Report(std::int64_t status, const wchar_t* const* lines) {
  isPrepared_ = false;
  if (status == kOK) {
    // Another server's answer is no word on the credential, and may be a log-in page.
    if (!LeftTheServer()) authentication_.Accepted();
    last_ = MORVANE_WARDEN_ACTION_DONE;
  } else if (status == kUnauthorized) {
    TakeChallenge(lines);
  } else if (status == kBadRequest && SentDigestOfAnotherTarget()) {
    FollowRedirect();
  } else {
    if (status == kProxyAuthenticationRequired) {
      WardenLog::Write(WardenLog::kFailure,
                       "Warden: a proxy asks for a log-on, and nobody logs on at a proxy");
    }
    last_ = status == 0 ? MORVANE_WARDEN_ACTION_NO_ANSWER : MORVANE_WARDEN_ACTION_REFUSED;
  }
}

void RequestContext::TakeChallenge(const wchar_t* const* lines) {
  if (LeftTheServer()) {
    // No credential went there, so none was rejected, and one for it would go to the server that was asked.
    WardenLog::Write(WardenLog::kFailure,
                     "Warden: the challenge is another server's: " + ServerOf(site_.url) + " was asked, " +
                         AnsweringServer() + " answers");
    last_ = MORVANE_WARDEN_ACTION_REFUSED;
    return;
  }
  FollowRedirect();
  std::vector<Challenge> challenges;
  for (const ResponseLine& line : UsableLines(lines)) {
    if (line.name == "www-authenticate") AppendChallenges(line.value, challenges);
  }
  authentication_.Challenged(std::move(challenges), site_.url.target);
}

void RequestContext::SetAnsweringUrl(std::optional<Url> url) {
  wasRedirected_ = true;
  answering_ = std::move(url);
}

std::string RequestContext::AnsweringServer() const {
  return answering_ ? ServerOf(*answering_) : "an address that cannot be read";
}

bool RequestContext::LeftTheServer() const {
  return wasRedirected_ && AnsweringServer() != ServerOf(site_.url);
}

// A server may answer that with a 400 (RFC 7616, 3.4).
bool RequestContext::SentDigestOfAnotherTarget() const {
  return wasRedirected_ && !LeftTheServer() && authentication_.IsDigestOfAnotherTarget(answering_->target);
}

void RequestContext::FollowRedirect() {
  if (wasRedirected_) site_.url.target = answering_->target;
}

}  // namespace Warden
