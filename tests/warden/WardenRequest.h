#pragma once

#include "libs/Warden_SDK/MorvaneWarden.h"

#include <cstdint>
#include <string>
#include <vector>

namespace TestSupport {

class WardenLibrary;

// A gateway as a request's forced route; the authentication as in MorvaneWardenRoute.
struct TestRoute {
  std::wstring location;
  std::uint32_t authentication = 1;
  std::uint32_t mode = MORVANE_WARDEN_MODE_REWRITE;
};

// One request of the library, from its initialisation to the end. One thread.
class WardenRequest {
 public:
  WardenRequest(WardenLibrary& library, const std::wstring& storeUrl);
  ~WardenRequest();
  WardenRequest(const WardenRequest&) = delete;
  WardenRequest& operator=(const WardenRequest&) = delete;

  MorvaneWardenStatus ForceRoute(const TestRoute& route);
  MorvaneWardenStatus SetQuestions(const MorvaneWardenQuestions& questions);
  [[nodiscard]] std::uint32_t Prepare();
  [[nodiscard]] std::wstring Url();
  [[nodiscard]] std::vector<std::wstring> Headers();
  MorvaneWardenStatus SetAnsweringUrl(const std::wstring& url);
  void Report(std::int64_t status, const std::vector<std::wstring>& lines = {});

  // Sends what is prepared until the library says otherwise, and returns its last action; 1 for success.
  std::uint32_t Run();
  [[nodiscard]] const std::wstring& Body() const { return body_; }
  // Requests that Run sent.
  [[nodiscard]] int Sent() const { return sent_; }
  // The header lines of the last request that Run sent.
  [[nodiscard]] const std::vector<std::wstring>& LastHeaders() const { return lastHeaders_; }

 private:
  WardenLibrary& library_;
  MorvaneWardenConnection* connection_ = nullptr;
  MorvaneWardenRequestContext* context_ = nullptr;
  std::wstring body_;
  std::vector<std::wstring> lastHeaders_;
  int sent_ = 0;
};

}  // namespace TestSupport
