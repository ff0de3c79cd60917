#include "fakes/StubSSLValidationFactory.h"

#include "SRLib/SSLValidation.h"
#include "fakes/FakeCriticalSections.h"
#include "fakes/StubMessages.h"

namespace TestSupport {
namespace {

using ServiceRecords::SSLValidationDetails;

class StubSSLValidation : public ServiceRecords::SSLValidation {
 public:
  StubSSLValidation(const std::wstring& url, const SSLOutcome& outcome)
      : SSLValidation(url, StubMessage), outcome_(outcome) {}

  bool PerformValidation(SSLValidationDetails& details) override {
    details.Organization = outcome_.organization;
    details.Issuer = outcome_.issuer;
    for (const std::wstring& error : outcome_.errors) details.AddError(error);
    details.Result = outcome_.result;
    details.Reason = outcome_.reason;
    return outcome_.trusted;
  }

 private:
  const SSLOutcome outcome_;
};

}  // namespace

SSLOutcome SSLOutcome::Trusted(const std::wstring& organization, const std::wstring& issuer) {
  return {true, organization, issuer, {}, SSLValidationDetails::kSuccess};
}

SSLOutcome SSLOutcome::Failed(std::uint32_t result, const std::vector<std::wstring>& errors) {
  return {false, L"", L"", errors, result};
}

std::unique_ptr<ServiceRecords::SSLValidation> StubSSLValidationFactory::Create(const std::wstring& url) {
  validated_.push_back(url);
  insideCriticalSection_ = insideCriticalSection_ || InsideCriticalSection();
  const auto outcome = outcomes_.find(url);
  if (outcome != outcomes_.end()) return std::make_unique<StubSSLValidation>(url, outcome->second);
  const auto notContacted = SSLOutcome::Failed(SSLValidationDetails::kServerNotContacted, {L"no answer"});
  return std::make_unique<StubSSLValidation>(url, notContacted);
}

}  // namespace TestSupport
