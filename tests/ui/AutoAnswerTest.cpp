#include "libs/PropertyList/PropertyList.h"
#include "support/TemporaryFolder.h"
#include "ui/TestBundle.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

// The demo's dialog program, which writes on the user's terminal what a document says.
namespace {

TEST(AutoAnswerTest, ItsTranscriptHasNothingThatControlsOrReordersTheTerminal) {
  const TestSupport::TemporaryFolder folder;
  const std::string details = PropertyList::Write(PropertyList::Dictionary{
      {"StoreName",
       "a\xC2\x9B\xD8\x9C\xE2\x80\x8E\xE2\x80\xAE\xE2\x81\xA6\xE2\x81\xA9z \xC3\xBC\xE2\x80\xA6"}});
  std::ofstream(folder.Path() / "request") << "ServiceRecordUI 1 replaceStore " << details.size() << '\n'
                                           << details;
  ::setenv("SERVICERECORDS_DEMO_TRANSCRIPT", (folder.Path() / "transcript").c_str(), 1);

  const std::string command = SR_SOURCE_DIR "/demo/auto-answer/servicerecord-dialog <" +
                              (folder.Path() / "request").string() + " >" +
                              (folder.Path() / "reply").string();
  ASSERT_EQ(std::system(command.c_str()), 0);

  EXPECT_EQ(ContentOf(folder.Path() / "reply"), "accepted\n");
  EXPECT_EQ(ContentOf(folder.Path() / "transcript"),
            "Replace dialog, answered with yes\n  StoreName: az \xC3\xBC\xE2\x80\xA6\n\n");
}

}  // namespace
