#include "SRLib/SSLValidation.h"

#include "SRLib/Platform/Messages.h"
#include "SRLib/Platform/SSLValidationDetails.h"
#include "SRLib/SSLValidationFactory.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Trace/Trace.h"

#include <utility>

namespace ServiceRecords {

SSLValidationFactory* SSLValidationFactory::c_Instance = nullptr;

SSLValidation::SSLValidation(const std::wstring& url, Messages messages)
    : url_(util::narrow(url)), messages_(std::move(messages)) {}

bool SSLValidation::ValidateURL(SSLValidationDetails& details) {
  details.Reset();
  if (!url_.IsSecure()) {
    SR_TRACE(0) << "Warning: HTTP connection requested for SSL validation with " << url_.GetURL()
                << " server.";
  }
  if (!url_.GetServer().empty()) return PerformValidation(details);
  SR_TRACE(2) << "Host name cannot be empty. Please check the URL " << url_.GetURL();
  details.AddError(Message(util::kMessageEmptyHostName, url_.GetDisplayURL()));
  return false;
}

std::wstring SSLValidation::Message(int id, std::string_view subject) const {
  return util::WithArgument(messages_(id), subject);
}

}  // namespace ServiceRecords
