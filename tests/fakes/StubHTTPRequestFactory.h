#pragma once

#include "SRLib/SRHTTPRequestFactory.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace TestSupport {

// What a server answers to one request.
struct HTTPAnswer {
  std::int64_t status = 0;
  std::wstring body;
  std::wstring rawHeader;
  std::wstring redirectedURL = {};            // where it comes from, behind redirects
  std::function<void()> meanwhile = nullptr;  // done before it answers
};

struct SentRequest {
  std::wstring url;
  std::wstring headers;
  bool operator==(const SentRequest&) const = default;
};

// Answers requests by URL, several to one URL in their order. A URL without a further answer has no server.
// One thread.
class StubHTTPRequestFactory : public ServiceRecords::SRHTTPRequestFactory {
 public:
  void Answer(const std::wstring& url, const HTTPAnswer& answer) { answers_[url].push_back(answer); }
  void Answer(const std::wstring& url, const std::wstring& body) { Answer(url, HTTPAnswer{200, body, L""}); }

  [[nodiscard]] const std::vector<SentRequest>& Sent() const { return sent_; }
  // Whether any request was sent by a thread inside a critical section.
  [[nodiscard]] bool SentInsideCriticalSection() const { return insideCriticalSection_; }

  [[nodiscard]] std::unique_ptr<ServiceRecords::SRHTTPRequest> Create(const std::wstring& url) override;
  // The next answer for that URL; the request is recorded.
  [[nodiscard]] HTTPAnswer Take(const SentRequest& request);

 private:
  std::map<std::wstring, std::deque<HTTPAnswer>> answers_;
  std::vector<SentRequest> sent_;
  bool insideCriticalSection_ = false;
};

}  // namespace TestSupport
