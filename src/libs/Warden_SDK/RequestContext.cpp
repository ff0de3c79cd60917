#include "RequestContext.h"

#include "Cancellation.h"
#include "CredentialProgram.h"
#include "ResponseLines.h"
#include "SRLib/TextHelpers.h"
#include "WardenLog.h"

#include <utility>

namespace Warden {
namespace {

// Three tries at a proxy and three at the server, a few legs of Negotiate and a stale nonce fit in.
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
      origin_("Authorization", program),
      proxy_("Proxy-Authorization", program) {}

bool RequestContext::ForceRoute(const MorvaneWardenRoute& route) {
  const std::optional<Url> gateway = Url::Parse(Narrow(route.GatewayLocation), "https");
  std::optional<Url> translated;
  if (gateway && IsInRange(route)) translated = ThroughGateway(*gateway, storeUrl_);
  if (!translated) {
    WardenLog::Write(WardenLog::kFailure, "Warden: no way through the gateway " + Narrow(route.GatewayName));
    last_ = MORVANE_WARDEN_ACTION_BAD_PARAMETER;
    return false;
  }
  if (Rewrites(route.GatewayMode)) site_ = {*translated, true, route.Authentication};
  return true;
}

MorvaneWardenAction RequestContext::Prepare() {
  isPrepared_ = false;
  answering_.reset();
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
  for (Authentication* authentication : {&proxy_, &origin_}) {
    const MorvaneWardenAction action = authentication->Prepare(site_);
    if (action != MORVANE_WARDEN_ACTION_SEND) return action;
  }
  return cancellation_.Requested() ? MORVANE_WARDEN_ACTION_CANCELLED : MORVANE_WARDEN_ACTION_SEND;
}

std::string RequestContext::TranslatedUrl() const {
  return site_.url.scheme + "://" + site_.url.authority + site_.url.target;
}

std::vector<std::string_view> RequestContext::HeaderLines() const {
  std::vector<std::string_view> lines;
  for (const Authentication* authentication : {&origin_, &proxy_}) {
    if (!authentication->HeaderLine().IsEmpty()) lines.push_back(authentication->HeaderLine().View());
  }
  return lines;
}

void RequestContext::Report(std::int64_t status, const wchar_t* const* lines) {
  isPrepared_ = false;
  if (status == kOK) {
    proxy_.Accepted();
    origin_.Accepted();
    last_ = MORVANE_WARDEN_ACTION_DONE;
  } else if (status == kUnauthorized) {
    TakeServersChallenge(lines);
  } else if (status == kProxyAuthenticationRequired) {
    Challenged(proxy_, "proxy-authenticate", lines);
  } else if (status == kBadRequest && SentDigestOfAnotherTarget()) {
    FollowRedirect();
  } else {
    last_ = status == 0 ? MORVANE_WARDEN_ACTION_NO_ANSWER : MORVANE_WARDEN_ACTION_REFUSED;
  }
}

void RequestContext::TakeServersChallenge(const wchar_t* const* lines) {
  if (LeftTheServer()) {
    // No credential went there, so none was rejected, and one for it would go to the server that was asked.
    WardenLog::Write(WardenLog::kFailure,
                     "Warden: the challenge is another server's: " + ServerOf(site_.url) + " was asked, " +
                         ServerOf(*answering_) + " answers");
    last_ = MORVANE_WARDEN_ACTION_REFUSED;
    return;
  }
  FollowRedirect();
  Challenged(origin_, "www-authenticate", lines);
}

bool RequestContext::LeftTheServer() const {
  return answering_ && ServerOf(*answering_) != ServerOf(site_.url);
}

// A server may answer that with a 400 (RFC 7616, 3.4).
bool RequestContext::SentDigestOfAnotherTarget() const {
  return answering_ && !LeftTheServer() && origin_.IsDigestOfAnotherTarget(answering_->target);
}

void RequestContext::FollowRedirect() {
  if (answering_) site_.url.target = answering_->target;
}

void RequestContext::Challenged(Authentication& authentication, std::string_view header,
                                const wchar_t* const* lines) {
  std::vector<Challenge> challenges;
  for (const ResponseLine& line : UsableLines(lines)) {
    if (line.name == header) AppendChallenges(line.value, challenges);
  }
  authentication.Challenged(std::move(challenges), site_.url.target);
}

}  // namespace Warden
