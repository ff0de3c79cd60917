#include "stores-window/SessionObserver.h"
#include "support/AgentTest.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace Stores {
namespace {

using TestSupport::AgentTest;

// A session beside a real agent, whose dialogs answer as the test says.
class OpeningWithTheAgent : public AgentTest {
 protected:
  OpeningWithTheAgent() {
    agent_.Start();
    observed_.session.Reload();
  }

  [[nodiscard]] Notice NoticeAfterOpening(const std::string& file) {
    observed_.session.OpenFiles({file});
    EXPECT_TRUE(RunUntil([this] { return !observed_.notices.empty(); }));
    return observed_.notices.empty() ? Notice{} : observed_.notices.back();
  }

  ObservedSession observed_{agent_.BusAddress()};
};

TEST_F(OpeningWithTheAgent, AddsTheStoreAndSaysSo) {
  const Notice notice = NoticeAfterOpening(OpenableFile("one.cr", {Store("s1", "One")}));
  EXPECT_EQ(notice.sentences, "“\u2068One\u2069” was added.");
  EXPECT_TRUE(notice.isGood);
  EXPECT_EQ(notice.storeID, "s1") << "the window shows it";
  EXPECT_TRUE(observed_.RunUntilPage(Overview::Page::Stores));
  EXPECT_THAT(observed_.IDs(), ElementsAre("s1"));
}

TEST_F(OpeningWithTheAgent, SaysThatTheUserDeclined) {
  agent_.Answer("addStore", "declined");
  const Notice notice = NoticeAfterOpening(OpenableFile("one.cr", {Store("s1", "One")}));
  EXPECT_EQ(notice.sentences, "“\u2068One\u2069” was not added, because you decided against it.");
  EXPECT_FALSE(notice.isGood);
  EXPECT_EQ(notice.storeID, "");
  EXPECT_THAT(observed_.IDs(), IsEmpty());
}

TEST_F(OpeningWithTheAgent, SaysThatTheFileIsSomethingElse) {
  const Notice notice = NoticeAfterOpening(agent_.Write("holiday.cr", "no XML").string());
  EXPECT_THAT(notice.sentences, HasSubstr("“\u2068holiday.cr\u2069” is not a service record."));
}

TEST_F(OpeningWithTheAgent, FollowsWhatOthersDelete) {
  (void)NoticeAfterOpening(OpenableFile("one.cr", {Store("s1", "One")}));
  ASSERT_TRUE(observed_.RunUntilPage(Overview::Page::Stores));
  agent_.Bus().ServiceRecords("deleteStore", {"s1"});
  EXPECT_TRUE(observed_.RunUntilPage(Overview::Page::Empty));
}

}  // namespace
}  // namespace Stores
