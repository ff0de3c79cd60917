#pragma once

#include <memory>
#include <string>

namespace ServiceRecords {

class SRHTTPRequest;

// Makes requests of the platform's kind. The platform registers its factory in c_Instance at start-up, before
// other threads use it.
class SRHTTPRequestFactory {
 public:
  virtual ~SRHTTPRequestFactory() = default;
  [[nodiscard]] virtual std::unique_ptr<SRHTTPRequest> Create(const std::wstring& url) = 0;

  static SRHTTPRequestFactory* c_Instance;
};

}  // namespace ServiceRecords
