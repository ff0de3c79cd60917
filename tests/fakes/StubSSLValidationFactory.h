#pragma once

#include "SRLib/Platform/SSLValidationDetails.h"
#include "SRLib/SSLValidationFactory.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace TestSupport {

// What a validation of one server finds out.
struct SSLOutcome {
  bool trusted = false;
  std::wstring organization;
  std::wstring issuer;
  std::vector<std::wstring> errors;
  std::uint32_t result = ServiceRecords::SSLValidationDetails::kSuccess;
  std::wstring reason = {};

  static SSLOutcome Trusted(const std::wstring& organization, const std::wstring& issuer);
  static SSLOutcome Failed(std::uint32_t result, const std::vector<std::wstring>& errors);
};

// Answers validations by URL. A URL without an outcome is a server that cannot be contacted. One thread.
class StubSSLValidationFactory : public ServiceRecords::SSLValidationFactory {
 public:
  void Answer(const std::wstring& url, const SSLOutcome& outcome) { outcomes_[url] = outcome; }
  // The URLs for which validations were made, in order.
  [[nodiscard]] const std::vector<std::wstring>& Validated() const { return validated_; }
  // Whether any validation was made by a thread inside a critical section.
  [[nodiscard]] bool ValidatedInsideCriticalSection() const { return insideCriticalSection_; }

  [[nodiscard]] std::unique_ptr<ServiceRecords::SSLValidation> Create(const std::wstring& url) override;

 private:
  std::map<std::wstring, SSLOutcome> outcomes_;
  std::vector<std::wstring> validated_;
  bool insideCriticalSection_ = false;
};

}  // namespace TestSupport
