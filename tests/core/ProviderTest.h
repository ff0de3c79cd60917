#pragma once

#include "SRLib/SRProvider.h"
#include "core/CoreTest.h"
#include "core/Documents.h"
#include "fakes/FakeCriticalSections.h"
#include "fakes/MockNotifications.h"
#include "support/StoreBuilders.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace testsupport {

// A provider of the test's own with an empty repository, whose dialogs the test expects one by one.
class ProviderTest : public CoreTest {
 protected:
  using Wide = std::vector<std::wstring>;

  ProviderTest() {
    provider_.InitNotificationManager(&notifications_);
    Forget();
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
    CapturedTrace::Clear();
    RecordedPublications::Clear();
    writesBefore_ = UserConfiguration().Writes();
  }

  // Whether the only publication followed on the last write.
  [[nodiscard]] bool SavedAndThenPublishedOnce() const {
    const auto publications = RecordedPublications::All();
    return WasSaved() && publications.size() == 1 &&
           publications.front().writesBefore == UserConfiguration().Writes();
  }

  [[nodiscard]] bool WasSaved() const { return UserConfiguration().Writes() != writesBefore_; }

  static Texts ProviderTexts() { return CapturedTrace::TextsFrom("SRProvider.cpp"); }

  ::testing::StrictMock<MockNotifications> notifications_;
  ServiceRecords::SRProvider provider_;

 private:
  int writesBefore_ = 0;
};

inline std::string Narrow(const std::wstring& ascii) {
  return std::string(ascii.begin(), ascii.end());
}

}  // namespace testsupport
