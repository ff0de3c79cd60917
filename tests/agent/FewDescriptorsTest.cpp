#include "support/AgentTest.h"

#include <csignal>

using testing::AnyOf;
using testing::HasSubstr;

namespace {

using TestSupport::AgentTest;

class FewDescriptors : public AgentTest {
 protected:
  [[nodiscard]] TestSupport::ChildProcess RunWithDescriptors(int limit) const {
    return TestSupport::ChildProcess({"sh", "-c", "ulimit -n " + std::to_string(limit) + " && exec \"$0\"",
                                      (agent_.BundleFolder() / "ServiceRecords").string()},
                                     agent_.Environment(), {.captureErrors = true});
  }
};

TEST_F(FewDescriptors, MakeTheStartFailWithAMessage) {
  int failed = 0;
  for (const int limit : {3, 4, 5, 6, 8, 10, 11, 12, 14, 16, 20, 24, 28, 32, 36, 40, 48, 64}) {
    auto program = RunWithDescriptors(limit);
    ASSERT_TRUE(agent_.Bus().WaitUntil(
        [&] { return !program.IsRunning() || agent_.Bus().HasOwner("com.morvane.ServiceRecords"); }));
    if (program.IsRunning()) {
      program.Signal(SIGTERM);
      EXPECT_EQ(program.Wait(), 0) << limit;
      continue;
    }
    // The loader of the libraries has a status of its own.
    EXPECT_THAT(program.Wait(), AnyOf(1, 127)) << limit;
    EXPECT_THAT(program.Output(), AnyOf(HasSubstr("oo many open files"), HasSubstr("shared libraries")))
        << limit;
    if (program.Wait() == 1) ++failed;
  }
  EXPECT_GE(failed, 10);
}

}  // namespace
