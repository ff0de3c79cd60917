#include "srctl/SrctlRun.h"
#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fstream>

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

const std::vector<std::string> kCommands{"open",     "list",     "show",    "delete",       "default-gateway",
                                         "discover", "location", "gateway", "reachability", "watch",
                                         "logging",  "doctor",   "help"};

SrctlRun RunAlone(const std::vector<std::string>& arguments) {
  return RunSrctl(arguments, {"DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"});
}

void ExpectUsageError(const std::vector<std::string>& arguments, const std::string& problem) {
  const SrctlRun run = RunAlone(arguments);
  EXPECT_EQ(run.status, 2) << run.errors;
  EXPECT_THAT(run.output, IsEmpty());
  EXPECT_THAT(run.errors, Not(HasSubstr("\x1B")));
  EXPECT_THAT(run.errors,
              AllOf(StartsWith("srctl: "), HasSubstr(problem), HasSubstr("How it is used: srctl")));
}

TEST(SrctlUsage, HelpNamesEveryCommandAndExitStatus) {
  const SrctlRun run = RunAlone({"--help"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.errors, IsEmpty());
  for (const std::string& command : kCommands) EXPECT_THAT(run.output, HasSubstr("\n  " + command + " "));
  EXPECT_THAT(run.output, HasSubstr("0 done, 1 refused or not found, 2 wrong usage, 3 the agent cannot be "
                                    "reached"));
}

TEST(SrctlUsage, EveryCommandHasHelpOfItsOwn) {
  for (const std::string& command : kCommands) {
    const SrctlRun run = RunAlone({command, "--help"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.output, HasSubstr("srctl " + command + " "));
    EXPECT_THAT(run.errors, IsEmpty());
  }
}

TEST(SrctlUsage, TheHelpOfOpenNamesItsStatuses) {
  const std::string help = RunAlone({"open", "--help"}).output;
  for (const char* status : {"4 declined", "5 a server could not be verified", "6 no service record",
                             "7 nobody could be asked", "8 not saved", "9 the agent ended"})
    EXPECT_THAT(help, HasSubstr(status));
}

TEST(SrctlUsage, AQuestionIsAskedInOnePlace) {
  ExpectUsageError({"open", "--terminal", "--window", "a.cr"}, "--terminal");
}

TEST(SrctlUsage, HelpOfACommandIsWhatTheCommandItselfTells) {
  for (const std::string& command : kCommands) {
    const SrctlRun run = RunAlone({"help", command});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, RunAlone({command, "--help"}).output);
    EXPECT_THAT(run.errors, IsEmpty());
  }
  EXPECT_EQ(RunAlone({"help"}).output, RunAlone({"--help"}).output);
  ExpectUsageError({"help", "lst"}, "there is no command \"lst\"");
}

TEST(SrctlUsage, JsonBeforeTheCommandMeansTheSame) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--json", "logging"}, {"logging", "--json"}})
    EXPECT_EQ(RunAlone(arguments).output, "{\n  \"logging\": false\n}\n");
}

TEST(SrctlUsage, JsonBeforeACommandThatPrintsNoDataIsRefused) {
  for (const char* command : {"open", "delete", "discover"})
    ExpectUsageError({"--json", command, "one"}, "--json");
  ExpectUsageError({"--json", "help"}, "--json");
  ExpectUsageError({"--json", "doctor", "--json-lines"}, "--json-lines excludes --json");
}

TEST(SrctlUsage, AFileWhoseNameBeginsWithADashIsToldHowToBeWritten) {
  const TestSupport::TemporaryFolder folder;
  std::ofstream(folder.Path() / "-x.cr") << "no record";
  const SrctlSetting there{.folder = folder.Path().string()};
  for (const char* command : {"open", "doctor", "discover"}) {
    const SrctlRun run = RunSrctl({command, "-x.cr"}, {}, there);
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.errors, HasSubstr("To name the file -x.cr, write './-x.cr', or -- before it."));
    EXPECT_THAT(RunAlone({command, "-x.cr"}).errors, Not(HasSubstr("To name the file")));
  }
  EXPECT_THAT(RunSrctl({"doctor", "./-x.cr"}, {}, there).output, HasSubstr("./-x.cr is no service record"));
  EXPECT_THAT(RunSrctl({"doctor", "--", "-x.cr"}, {}, there).output, HasSubstr("-x.cr is no service record"));
  EXPECT_THAT(RunSrctl({"doctor", "--", "-x.cr", "-x.cr"}, {}, there).errors,
              Not(HasSubstr("To name the file")));
}

TEST(SrctlUsage, TellsItsVersion) {
  const SrctlRun run = RunAlone({"--version"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.output, testing::MatchesRegex("srctl [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(SrctlUsage, ACommandHasToBeNamed) {
  ExpectUsageError({}, "Name a command");
}

TEST(SrctlUsage, AnUnknownCommandIsNamed) {
  ExpectUsageError({"lst"}, "There is no command or option \"lst\"");
  ExpectUsageError({"--lst"}, "There is no command or option \"--lst\"");
  ExpectUsageError({""}, "There is no command or option \"\"");
}

TEST(SrctlUsage, AMissingArgumentIsNamed) {
  ExpectUsageError({"open"}, "FILE is required");
  ExpectUsageError({"discover"}, "FILE is required");
  ExpectUsageError({"show"}, "ID is required");
  ExpectUsageError({"delete"}, "ID is required");
  ExpectUsageError({"default-gateway", "--id", "s1"}, "NAME is required");
  ExpectUsageError({"location"}, "URL is required");
  ExpectUsageError({"location", "--wait"}, "URL is required");
  ExpectUsageError({"gateway"}, "URL is required");
}

TEST(SrctlUsage, AWaitIsANumberOfSeconds) {
  for (const char* wait : {"--wait=0", "--wait=soon", "--wait=-1", "--wait=1.5", "--wait=86401"}) {
    ExpectUsageError({"location", "https://one.example", wait}, "wait");
  }
}

TEST(SrctlUsage, TheHintNamesTheCommandThatWasMeant) {
  ExpectUsageError({"show"}, "srctl show --help");
}

TEST(SrctlUsage, ADefaultGatewayNeedsExactlyOneWayToNameTheStore) {
  ExpectUsageError({"default-gateway", "Branch"}, "--id");
  ExpectUsageError({"default-gateway", "--id", "s1", "--url", "https://one.example", "Branch"}, "--url");
}

TEST(SrctlUsage, AnArgumentTooManyIsNamed) {
  ExpectUsageError({"list", "all"}, "all");
  ExpectUsageError({"show", "s1", "s2"}, "s2");
  ExpectUsageError({"list", "--josn"}, "--josn");
}

TEST(SrctlUsage, LoggingIsOnOrOff) {
  ExpectUsageError({"logging", "maybe"}, "maybe not in {on,off}");
  ExpectUsageError({"logging", ""}, "not in {on,off}");
}

TEST(SrctlUsage, ArgumentsForTheAgentAreUtf8) {
  ExpectUsageError({"show", "a\xFF"}, "it is not UTF-8 text");
  ExpectUsageError({"delete", "a\xFF"}, "it is not UTF-8 text");
  ExpectUsageError({"default-gateway", "--id", "a\xFF", "Branch"}, "it is not UTF-8 text");
  ExpectUsageError({"default-gateway", "--url", "a\xFF", "Branch"}, "it is not UTF-8 text");
  ExpectUsageError({"default-gateway", "--id", "s1", "a\xFF"}, "it is not UTF-8 text");
  ExpectUsageError({"location", "a\xFF"}, "it is not UTF-8 text");
  ExpectUsageError({"gateway", "a\xFF"}, "it is not UTF-8 text");
}

TEST(SrctlUsage, EscapeSequencesAreNotEchoed) {
  ExpectUsageError({"\x1B[31mred"}, "\"\uFFFD[31mred\"");
  ExpectUsageError({"list", "\x1B[31mred"}, "\uFFFD[31mred");
}

TEST(SrctlUsage, OutputThatNobodyTakesIsAFailure) {
  TestSupport::ChildProcess child({"sh", "-c", "exec \"$0\" --version >/dev/full", SR_STAGE_DIR "/bin/srctl"},
                                  {}, {.captureErrors = true});
  EXPECT_EQ(child.Wait(), 1);
  EXPECT_THAT(child.Output(), StartsWith("srctl: The output could not be written. "));
}

}  // namespace
