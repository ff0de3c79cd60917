#include "Process/PlatformParts.h"

#include "GenericFactories.h"
#include "MacUtils.h"
#include "MacWayfinderProxy.h"
#include "ResourceKeeper.h"
#include "SRLib/SRHTTPRequestFactory.h"
#include "SRLib/SSLValidationFactory.h"

namespace Agent {

using namespace ServiceRecords;

ProviderParts PlatformParts() {
  CGenericFactories& factories = CGenericFactories::Instance();
  return {.criticalSections = factories.CriticalSections(),
          .configuration = factories.UserConfiguration(),
          .readDocument = util::ReadUTF8File,
          .publish = SetAllServiceRecordsToList,
          .locationRelativeTo = LocationRelativeToStoreURL,
          .message = util::MessageFromResourceW,
          .waitOneSecond = util::WaitOneSecond,
          .requests = *SRHTTPRequestFactory::c_Instance,
          .warden = {},
          .validations = *SSLValidationFactory::c_Instance};
}

}  // namespace Agent
