#include "SRLib/SSLValidation.h"

#include "SRLib/Platform/Messages.h"
#include "SRLib/Platform/SSLValidationDetails.h"
#include "SRLib/SSLValidationFactory.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Trace/Trace.h"

namespace ServiceRecords {

SSLValidationFactory* SSLValidationFactory::c_Instance = nullptr;

SSLValidation::SSLValidation(const std::wstring& url) : url_(util::narrow(url)) {}

bool SSLValidation::ValidateURL(SSLValidationDetails& details) {
  details.Reset();
  if (!url_.IsSecure()) {
    SR_TRACE(0) << "Warning: HTTP connection requested for SSL validation with " << url_.GetURL()
                << " server.";
  }
  if (!url_.GetServer().empty()) return PerformValidation(details);
  SR_TRACE(2) << "Host name cannot be empty. Please check the URL " << url_.GetURL();
  details.AddError(util::MessageWithArgument(util::kMessageEmptyHostName, url_.GetDisplayURL()));
  return false;
}

}  // namespace ServiceRecords
