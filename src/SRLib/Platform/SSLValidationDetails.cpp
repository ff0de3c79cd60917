#include "SRLib/Platform/SSLValidationDetails.h"

namespace ServiceRecords {

SSLValidationDetails::SSLValidationDetails() {
  Reset();
}

void SSLValidationDetails::Reset() {
  Organization.clear();
  Issuer.clear();
  Errors.clear();
  Result = kSuccess;
  Reason.clear();
  TechnicalDetails.clear();
}

}  // namespace ServiceRecords
