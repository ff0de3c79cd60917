#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace {

using TestSupport::ChildProcess;

TEST(ChildProcess, GivesTheExitStatusAndTheOutput) {
  ChildProcess child({"sh", "-c", "echo out; echo err >&2; exit 3"}, {}, {.captureErrors = true});
  EXPECT_EQ(child.Wait(), 3);
  EXPECT_EQ(child.Output(), "out\nerr\n");
}

TEST(ChildProcess, RunsWithTheEnvironmentOfTheTestAndWhatIsAdded) {
  ::setenv("SR_TEST_KEPT", "kept", 1);
  ::setenv("SR_TEST_REPLACED", "old", 1);
  ChildProcess child({"sh", "-c", "echo $SR_TEST_KEPT $SR_TEST_REPLACED"}, {"SR_TEST_REPLACED=new"});
  EXPECT_EQ(child.Wait(), 0);
  EXPECT_EQ(child.Output(), "kept new\n");
}

TEST(ChildProcess, WaitsForOutputOfAChildThatGoesOn) {
  ChildProcess child({"sh", "-c", "echo ready; exec sleep 60"});
  EXPECT_EQ(child.WaitForOutput("ready"), "ready\n");
  EXPECT_TRUE(child.IsRunning());
  child.Signal(SIGTERM);
  EXPECT_EQ(child.Wait(), 128 + SIGTERM);
}

TEST(ChildProcess, ReportsAChildThatEndsWithoutTheAwaitedOutput) {
  ChildProcess child({"sh", "-c", "echo something else"});
  EXPECT_THROW(child.WaitForOutput("ready"), std::runtime_error);
}

TEST(ChildProcess, EndsWithItsObject) {
  pid_t pid = 0;
  {
    const ChildProcess child({"sleep", "60"});
    pid = child.Pid();
    EXPECT_EQ(::kill(pid, 0), 0);
  }
  EXPECT_EQ(::kill(pid, 0), -1);
}

TEST(ChildProcess, EndsWithStatus127WhenThereIsNoSuchProgram) {
  ChildProcess child({"/nonexistent/program"});
  EXPECT_EQ(child.Wait(), 127);
}

}  // namespace
