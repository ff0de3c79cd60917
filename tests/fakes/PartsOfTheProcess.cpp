#include "fakes/PartsOfTheProcess.h"

#include "fakes/FakeConfigurator.h"
#include "fakes/FakeCriticalSections.h"
#include "fakes/FakeWarden.h"
#include "fakes/PlainDocumentFile.h"
#include "fakes/StubHTTPRequestFactory.h"
#include "fakes/StubMessages.h"
#include "fakes/StubSSLValidationFactory.h"

#include <utility>

namespace TestSupport {

ServiceRecords::ProviderParts PartsOfTheProcess(std::function<void()> published) {
  static FakeCriticalSectionFactory criticalSections;
  static FakeConfigurator configuration;
  static StubHTTPRequestFactory requests;
  static StubSSLValidationFactory validations;
  configuration.CreateContainer(L"SR\\Store\\a");
  return {.criticalSections = criticalSections,
          .configuration = configuration,
          .readDocument = ReadPlainDocument,
          .publish = [published = std::move(published)](const auto&) { published(); },
          .locationRelativeTo = [](const auto&) { return 2U; },
          .message = StubMessage,
          .waitOneSecond = [] { return true; },
          .requests = requests,
          .warden = FakeWarden::Functions(),
          .validations = validations};
}

}  // namespace TestSupport
