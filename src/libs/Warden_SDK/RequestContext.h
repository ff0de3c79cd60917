#pragma once

#include "Authentication.h"
#include "MorvaneWarden.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace Warden {

class Cancellation;
class CredentialProgram;
struct ResponseLine;

// One request on its way: what to send, until it is answered or there is no way on. One thread.
class RequestContext {
 public:
  // The URL in UTF-8. The references must outlive the object.
  RequestContext(Url storeUrl, const CredentialProgram& program, const Cancellation& cancellation);

  // False when the route makes no sense; nothing is prepared any more then.
  [[nodiscard]] bool ForceRoute(const MorvaneWardenRoute& route);

  [[nodiscard]] MorvaneWardenAction Prepare();
  // Whether there is a request to be sent, whose answer is to be reported.
  [[nodiscard]] bool IsPrepared() const { return isPrepared_; }
  [[nodiscard]] std::string TranslatedUrl() const;
  // None, one or two lines without line ends.
  [[nodiscard]] std::vector<std::string_view> HeaderLines() const;

  void Report(std::int64_t status, const wchar_t* const* lines);

 private:
  [[nodiscard]] MorvaneWardenAction PrepareRequest();
  void Challenged(Authentication& authentication, std::string_view header,
                  const std::vector<ResponseLine>& lines);

  Url storeUrl_;
  Site site_;
  const Cancellation& cancellation_;
  Authentication origin_;
  Authentication proxy_;
  std::optional<MorvaneWardenAction> last_;
  int passes_ = 0;
  bool isPrepared_ = false;
};

}  // namespace Warden
