#include "Process/PlatformParts.h"

#include "GenericFactories.h"
#include "MacUtils.h"
#include "MacWayfinderProxy.h"
#include "ResourceKeeper.h"
#include "SRLib/Platform/Messages.h"
#include "SRLib/SRHTTPRequestFactory.h"
#include "SRLib/SSLValidationFactory.h"

namespace Agent {

using namespace ServiceRecords;

std::wstring WhyUnread(const std::error_code& error) {
  if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory)
    return util::MessageFromResourceW(util::kReasonNoFile);
  if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted)
    return util::MessageFromResourceW(util::kReasonNotPermitted);
  // The latter of a socket, which cannot even be opened.
  if (error == std::errc::is_a_directory || error == std::errc::no_such_device_or_address)
    return util::MessageFromResourceW(util::kReasonNoDocument);
  // The system's own words are not in the catalogue's language.
  return util::WithArgument(util::MessageFromResourceW(util::kReasonReadingFailed),
                            std::to_string(error.value()));
}

namespace {

bool ReadDocument(const std::wstring& path, std::wstring& text, std::wstring& reason) {
  const std::error_code error = util::ReadDocumentFile(path, text);
  if (error) reason = WhyUnread(error);
  return !error;
}

}  // namespace

ProviderParts PlatformParts() {
  CGenericFactories& factories = CGenericFactories::Instance();
  return {.criticalSections = factories.CriticalSections(),
          .configuration = factories.UserConfiguration(),
          .readDocument = ReadDocument,
          .publish = SetAllServiceRecordsToList,
          .locationRelativeTo = LocationRelativeToStoreURL,
          .message = util::MessageFromResourceW,
          .waitOneSecond = util::WaitOneSecond,
          .requests = *SRHTTPRequestFactory::c_Instance,
          .warden = {},
          .validations = *SSLValidationFactory::c_Instance};
}

}  // namespace Agent
