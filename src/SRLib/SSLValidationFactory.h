#pragma once

#include <memory>
#include <string>

namespace ServiceRecords {

class SSLValidation;

// Makes validations of the platform's kind. The platform registers its factory in c_Instance at start-up,
// before other threads use it.
class SSLValidationFactory {
 public:
  virtual ~SSLValidationFactory() = default;
  [[nodiscard]] virtual std::unique_ptr<SSLValidation> Create(const std::wstring& url) = 0;

  static SSLValidationFactory* c_Instance;
};

}  // namespace ServiceRecords
