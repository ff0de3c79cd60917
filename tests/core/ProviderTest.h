#pragma once

#include "SRLib/SRProvider.h"
#include "core/CoreTest.h"
#include "core/Documents.h"
#include "fakes/DrivenClock.h"
#include "fakes/FakeWarden.h"
#include "fakes/MockNotifications.h"
#include "fakes/PlainDocumentFile.h"
#include "fakes/RecordedPublications.h"
#include "fakes/StubHTTPRequestFactory.h"
#include "fakes/StubMessages.h"
#include "fakes/StubNetworkLocation.h"
#include "fakes/StubSSLValidationFactory.h"
#include "support/StoreBuilders.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace TestSupport {

// A provider of the test's own with an empty repository, whose dialogs the test expects one by one.
class ProviderTest : public CoreTest {
 protected:
  using Wide = std::vector<std::wstring>;

  ProviderTest() {
    provider_.InitNotificationManager(&notifications_);
    Forget();
  }

  ServiceRecords::ProviderParts Parts() {
    return {.criticalSections = criticalSections_,
            .configuration = configuration_,
            .readDocument = ReadPlainDocument,
            .publish = [this](const auto& stores) { publications_.Add(stores); },
            .locationRelativeTo = [this](const auto& url) { return location_.RelativeTo(url); },
            .message = StubMessage,
            .waitOneSecond = [this] { return clock_.Pass(); },
            .requests = server_,
            .warden = FakeWarden::Functions(),
            .validations = validations_,
            .announce = [this](const auto& changes) { announced_.push_back(changes); }};
  }

  // Takes the stores into the list as they are, without saving or publishing.
  void Hold(const std::vector<ServiceRecords::SRStore>& stores) {
    ServiceRecords::StoreMap incoming = Map(stores);
    bool updated = false;
    provider_.MergeStores(incoming, false, updated);
    Forget();
  }

  // Forgets what was traced, saved and published so far; the saved tree stays.
  void Forget() {
    trace_.Clear();
    publications_.Clear();
    announced_.clear();
    writesBefore_ = configuration_.Writes();
  }

  // Whether the only publication followed on the last write.
  [[nodiscard]] bool SavedAndThenPublishedOnce() const {
    const auto publications = publications_.All();
    return WasSaved() && publications.size() == 1 &&
           publications.front().writesBefore == configuration_.Writes();
  }

  [[nodiscard]] bool WasSaved() const { return configuration_.Writes() != writesBefore_; }

  [[nodiscard]] Texts ProviderTexts() const { return trace_.TextsFrom(kProviderFile); }

  FakeCriticalSectionFactory criticalSections_;
  RecordedPublications publications_{[this] { return configuration_.Writes(); },
                                     [this] { return trace_.Records().size(); }};
  std::vector<std::vector<ServiceRecords::ListChange>> announced_;  // at one time each
  StubNetworkLocation location_;
  DrivenClock clock_;
  StubHTTPRequestFactory server_;
  StubSSLValidationFactory validations_;
  ::testing::StrictMock<MockNotifications> notifications_;
  ServiceRecords::SRProvider provider_{Parts()};

 private:
  int writesBefore_ = 0;
};

inline std::string Narrow(const std::wstring& ascii) {
  return std::string(ascii.begin(), ascii.end());
}

}  // namespace TestSupport
