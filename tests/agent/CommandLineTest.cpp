#include "support/AgentTest.h"

#include <filesystem>

using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

class CommandLine : public AgentTest {
 protected:
  static constexpr testsupport::ChildOptions kWithErrors{.captureErrors = true};

  // Nothing was started, and nothing made in the user's home.
  void ExpectNoAgent() {
    EXPECT_FALSE(agent_.Bus().HasOwner("com.morvane.ServiceRecords"));
    EXPECT_FALSE(std::filesystem::exists(agent_.Home() / "Library"));
    EXPECT_TRUE(std::filesystem::is_empty(agent_.ConfigFolder()));
  }

  [[nodiscard]] testsupport::ChildProcess RunWithDescriptors(int limit) const {
    return testsupport::ChildProcess({"sh", "-c", "ulimit -n " + std::to_string(limit) + " && exec \"$0\"",
                                      (agent_.BundleFolder() / "ServiceRecords").string()},
                                     agent_.Environment(), kWithErrors);
  }
};

TEST_F(CommandLine, HelpAndVersionArePrinted) {
  for (const char* option : {"--help", "-h"}) {
    auto program = agent_.Run({option});
    EXPECT_EQ(program.Wait(), 0);
    EXPECT_THAT(program.Output(), StartsWith("Usage: ServiceRecords [FILE...]\n"));
  }
  auto program = agent_.Run({"--version"});
  EXPECT_EQ(program.Wait(), 0);
  EXPECT_EQ(program.Output(), "ServiceRecords 1.0.0\n");
  ExpectNoAgent();
}

TEST_F(CommandLine, WhatIsNotUnderstoodIsToldTheUsageAndStartsNothing) {
  const std::string file = OpenableFile("a.cr", {Store("s1", "One")});
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {"--agent"}, {"-x"}, {""}, {"--"}, {"--help=now"}, {file, ""}, {file, "--quiet"}}) {
    auto program = agent_.Run(arguments, kWithErrors);
    EXPECT_EQ(program.Wait(), 2) << testing::PrintToString(arguments);
    EXPECT_THAT(program.Output(), HasSubstr("Usage: ServiceRecords [FILE...]\n"));
  }
  ExpectNoAgent();
}

TEST_F(CommandLine, AFileWhoseNameIsNotUTF8IsRefused) {
  const std::string readAs = OpenableFile("St\xC3\xB6re.cr", {Store("s1", "One")});
  agent_.Start();
  for (const char* name : {"St\xF6re.cr", "St\xC3\xB6\xFFre.cr"}) {
    auto program = agent_.Run({agent_.Write(name, "").string()}, kWithErrors);
    EXPECT_EQ(program.Wait(), 1);
    EXPECT_THAT(program.Output(), HasSubstr("is not UTF-8; rename the file and try again"));
  }
  EXPECT_THAT(agent_.Dialogs(), IsEmpty());
}

// The sanitizer of undefined behaviour needs descriptors of its own, and reports what it cannot look at.
#ifndef __SANITIZE_ADDRESS__
TEST_F(CommandLine, WithTooFewDescriptorsTheStartFailsWithAMessage) {
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
#endif

}  // namespace
