#include "support/AgentTest.h"

#include <filesystem>

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

using TestSupport::AgentTest;

class CommandLine : public AgentTest {
 protected:
  static constexpr TestSupport::ChildOptions kWithErrors{.captureErrors = true};

  // Nothing was started, and nothing made in the user's home.
  void ExpectNoAgent() {
    EXPECT_FALSE(agent_.Bus().HasOwner("com.morvane.ServiceRecords"));
    EXPECT_FALSE(std::filesystem::exists(agent_.Home() / "Library"));
    EXPECT_TRUE(std::filesystem::is_empty(agent_.ConfigFolder()));
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

TEST_F(CommandLine, AFileThatCannotBeReadIsSaidAndToldTheAgentAllTheSame) {
  const std::string good = OpenableFile("a.cr", {Store("s1", "One")});
  const std::string missing = (agent_.Home() / "no\x1B[2J.cr").string();
  agent_.EnableLog();
  agent_.Start();
  for (const auto& [file, problem] :
       {std::pair(missing, "no [2J.cr\" cannot be read: No such file or directory\n"),
        std::pair(agent_.Home().string(), "\" is not a file that holds a document\n")}) {
    auto program = agent_.Run({file, good}, kWithErrors);
    EXPECT_EQ(program.Wait(), 1);
    EXPECT_THAT(program.Output(), HasSubstr(problem));
  }
  EXPECT_THAT(agent_.LogMessages(), testing::Contains("[+] MrvServiceRecordsSvr::handleServiceRecordFTA (" +
                                                      agent_.Home().string() + ")"));
  EXPECT_EQ(StoreIDs(), std::vector<std::string>{"s1"}) << "what can be read is delivered";
  auto program = agent_.Run({good}, kWithErrors);
  EXPECT_EQ(program.Wait(), 0);
  EXPECT_THAT(program.Output(), IsEmpty());
}

}  // namespace
