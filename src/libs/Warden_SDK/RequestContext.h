#pragma once

#include "libs/Warden_SDK/Authentication.h"
#include "libs/Warden_SDK/MorvaneWarden.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Warden {

class Cancellation;
class CredentialProgram;

// One request on its way: what to send, until it is answered or there is no way on. One thread.
class RequestContext {
 public:
  // The URL in UTF-8. The references must outlive the object.
  RequestContext(Url storeUrl, const CredentialProgram& program, const Cancellation& cancellation);

  // False when the route makes no sense; nothing is prepared any more then.
  [[nodiscard]] bool ForceRoute(const MorvaneWardenRoute& route);

  void SetQuestions(const MorvaneWardenQuestions& questions);

  [[nodiscard]] MorvaneWardenAction Prepare();
  // Whether there is a request to be sent, whose answer is to be reported.
  [[nodiscard]] bool IsPrepared() const { return isPrepared_; }
  [[nodiscard]] std::string TranslatedUrl() const;
  // The header line to send, without its end; empty for none.
  [[nodiscard]] std::string_view HeaderLine() const { return authentication_.HeaderLine().View(); }

  // Where the answer to the prepared request came from, when it was redirected. Nothing for an address that
  // cannot be read, which counts as another server's.
  void SetAnsweringUrl(std::optional<Url> url);
  void Report(std::int64_t status, const wchar_t* const* lines);

 private:
  [[nodiscard]] MorvaneWardenAction PrepareRequest();
  [[nodiscard]] std::string AnsweringServer() const;
  // Whether the request was redirected to another server than the one that it was made for.
  [[nodiscard]] bool LeftTheServer() const;
  // Whether a redirect took a digest along to a target of the same server that it is not good for.
  [[nodiscard]] bool SentDigestOfAnotherTarget() const;
  // From now on what the server itself has redirected to is requested.
  void FollowRedirect();
  void TakeChallenge(const wchar_t* const* lines);

  Url storeUrl_;
  Site site_;
  bool wasRedirected_ = false;
  std::optional<Url> answering_;  // of the last redirect
  const Cancellation& cancellation_;
  Authentication authentication_;
  std::optional<MorvaneWardenAction> last_;
  int passes_ = 0;
  bool isPrepared_ = false;
};

}  // namespace Warden
