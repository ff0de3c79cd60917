#include "fakes/StubHTTPRequestFactory.h"

#include "SRLib/SRHTTPRequest.h"
#include "fakes/FakeCriticalSections.h"

namespace TestSupport {
namespace {

class StubHTTPRequest : public ServiceRecords::SRHTTPRequest {
 public:
  StubHTTPRequest(const std::wstring& url, StubHTTPRequestFactory& factory)
      : SRHTTPRequest(url), address_(url), factory_(factory) {}

  bool SendHTTPRequest(const std::wstring& extraHeaders) override {
    HTTPAnswer answer = factory_.Take({address_, extraHeaders});
    status_ = answer.status;
    body_ = std::move(answer.body);
    rawHeader_ = std::move(answer.rawHeader);
    redirectedURL_ = std::move(answer.redirectedURL);
    return status_ == 200;
  }

 private:
  const std::wstring address_;
  StubHTTPRequestFactory& factory_;
};

}  // namespace

std::unique_ptr<ServiceRecords::SRHTTPRequest> StubHTTPRequestFactory::Create(const std::wstring& url) {
  return std::make_unique<StubHTTPRequest>(url, *this);
}

HTTPAnswer StubHTTPRequestFactory::Take(const SentRequest& request) {
  sent_.push_back(request);
  insideCriticalSection_ = insideCriticalSection_ || InsideCriticalSection();
  std::deque<HTTPAnswer>& answers = answers_[request.url];
  if (answers.empty()) return {};
  HTTPAnswer answer = answers.front();
  answers.pop_front();
  if (answer.meanwhile) answer.meanwhile();
  return answer;
}

}  // namespace TestSupport
