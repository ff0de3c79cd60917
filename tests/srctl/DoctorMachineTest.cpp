#include "srctl/DoctorTest.h"
#include "support/VirtualScreen.h"

#include <filesystem>

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

namespace fs = std::filesystem;

class DoctorOfTheMachine : public DoctorTest {
 protected:
  [[nodiscard]] fs::path PlugIn() const { return agent_.BundleFolder() / "PlugIns/ServiceRecordUI.bundle"; }

  // The file is a further name of the staged one, which stays as it is.
  void ReplaceInPlugIn(const std::string& name, const std::string& content) {
    fs::remove(PlugIn() / name);
    agent_.Write("prefix/lib/servicerecords/PlugIns/ServiceRecordUI.bundle/" + name, content);
  }

  void ExpectPlugInProblem(const std::string& what) const {
    const SrctlRun run = Srctl({"doctor"});
    EXPECT_EQ(run.status, 1);
    ExpectProblem(Line(run, "plug-in"), what, "Install the program again.");
  }

  // The folder of the machine-wide configuration.
  [[nodiscard]] std::string MachineFile() const {
    return (agent_.Home().parent_path() / "etc/Morvane/ServiceRecords.plist").string();
  }
};

TEST_F(DoctorOfTheMachine, FindsNothingWrongWithANewAgent) {
  std::vector<std::string> environment = agent_.Environment();
  const TestSupport::VirtualScreen screen;
  for (const std::string& variable : screen.Environment()) environment.push_back(variable);
  const SrctlRun run = RunSrctl({"doctor"}, environment);
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.errors, IsEmpty());
  EXPECT_EQ(run.output,
            "ok: agent: It answers on the session bus.\n"
            "ok: log: It is off. When it is on (srctl logging on), it is written to " +
                agent_.LogFile().string() + ".\nok: plug-in: The plug-in of the dialogs is complete: " +
                PlugIn().string() + "\nok: credentials: Their program can be run: " +
                (agent_.BundleFolder() / "servicerecord-credential").string() +
                "\nok: questions: srctl open has you asked in a window of your desktop."
                "\nok: file type: The desktop opens .cr files with this program."
                "\nok: configuration of the user: There is none, which is fine: " +
                agent_.StoresFile().string() +
                "\nok: configuration of the machine: There is none, which is fine: " + MachineFile() +
                "\nnote: stores: There are none yet. Next: Open the service-record file that your "
                "administrator gave you: srctl open FILE\n"
                "Nothing is wrong.\n");
}

TEST_F(DoctorOfTheMachine, TellsWhereTheLogIsWhenItIsOn) {
  ASSERT_EQ(Srctl({"logging", "on"}).status, 0);
  EXPECT_EQ(Line(Srctl({"doctor"}), "log"), "ok: log: It is on: " + agent_.LogFile().string());
}

TEST_F(DoctorOfTheMachine, SeesThatTheLogCannotBeWritten) {
  ASSERT_EQ(Srctl({"logging", "on"}).status, 0);
  agent_.Terminate();
  fs::rename(agent_.LogFile(), agent_.Home() / "elsewhere");
  fs::create_symlink(agent_.Home() / "elsewhere", agent_.LogFile());
  agent_.Start();
  ExpectProblem(Line(Srctl({"doctor"}), "log"),
                "It is on, but nothing is written: " + agent_.LogFile().string() + " is no regular file.",
                "Remove it, then end the agent, which looks for it at its start (pkill -x ServiceRecords).");
  fs::remove(agent_.LogFile());
  agent_.Terminate();
  agent_.Start();
  EXPECT_THAT(Line(Srctl({"doctor"}), "log"), StartsWith("ok: "));
  EXPECT_TRUE(fs::is_regular_file(agent_.LogFile()));
}

TEST_F(DoctorOfTheMachine, LooksAtTheFilesWithoutAnAgentToo) {
  std::vector<std::string> environment = agent_.Environment();
  environment.push_back("DBUS_SESSION_BUS_ADDRESS=unix:path=" + (agent_.Home() / "nobody").string());
  const SrctlRun run = RunSrctl({"doctor"}, environment);
  EXPECT_EQ(run.status, 1);
  ExpectProblem(Line(run, "agent"), "It cannot be reached: there is no session bus",
                "Run srctl in a desktop");
  EXPECT_THAT(Line(run, "plug-in"), StartsWith("note: "));
  EXPECT_THAT(Line(run, "configuration of the user"), StartsWith("ok: "));
  EXPECT_THAT(Line(run, "stores"), StartsWith("note: "));
  EXPECT_THAT(run.output, HasSubstr("One problem was found.\n"));
}

TEST_F(DoctorOfTheMachine, CreatesNothing) {
  const fs::path configuration = agent_.Home() / "configuration";
  std::vector<std::string> environment = agent_.Environment();
  environment.push_back("DBUS_SESSION_BUS_ADDRESS=unix:path=" + (agent_.Home() / "nobody").string());
  environment.push_back("XDG_CONFIG_HOME=" + configuration.string());
  EXPECT_THAT(Line(RunSrctl({"doctor"}, environment), "configuration of the user"),
              HasSubstr(configuration.string()));
  EXPECT_FALSE(fs::exists(configuration));
}

TEST_F(DoctorOfTheMachine, MissesAPlugIn) {
  fs::remove_all(PlugIn());
  ExpectPlugInProblem("there is no folder " + PlugIn().string());
}

TEST_F(DoctorOfTheMachine, SeesThatThePlugInHasNoDescription) {
  ReplaceInPlugIn("Info.plist", "damaged");
  ExpectPlugInProblem("Info.plist is missing or cannot be read");
}

TEST_F(DoctorOfTheMachine, SeesThatThePlugInIsAnother) {
  ReplaceInPlugIn("Info.plist",
                  PropertyList::Write(PropertyList::Dictionary{{"CFBundleExecutable", "ServiceRecordUI.so"},
                                                               {"SRConformsToProtocol", "OtherProtocol"}}));
  ExpectPlugInProblem("does not name the protocol SRUIProtocol");
}

TEST_F(DoctorOfTheMachine, MissesThePlugInsModule) {
  fs::remove(PlugIn() / "ServiceRecordUI.so");
  ExpectPlugInProblem("is not in its folder");
}

TEST_F(DoctorOfTheMachine, MissesTheDialogProgram) {
  fs::remove(PlugIn() / "servicerecord-dialog");
  ExpectPlugInProblem("servicerecord-dialog is missing");
}

TEST_F(DoctorOfTheMachine, SeesThatTheDialogProgramMayNotBeRun) {
  ReplaceInPlugIn("servicerecord-dialog", "#!/bin/sh\n");
  ExpectPlugInProblem("servicerecord-dialog may not be run");
}

TEST_F(DoctorOfTheMachine, MissesTheDialogWindows) {
  fs::remove(PlugIn() / "servicerecord-dialog-window");
  ExpectPlugInProblem("servicerecord-dialog-window is missing");
}

TEST_F(DoctorOfTheMachine, MissesTheCredentialProgram) {
  fs::remove(agent_.BundleFolder() / "servicerecord-credential");
  const SrctlRun run = Srctl({"doctor"});
  EXPECT_EQ(run.status, 1);
  ExpectProblem(Line(run, "credentials"),
                "No server that asks for a log-on gets one: ", "Install the program");
}

TEST_F(DoctorOfTheMachine, SeesThatNobodyCanBeAskedWithoutADesktopAndATerminal) {
  for (const char* display : {"DISPLAY=", "DISPLAY=:59077"}) {
    TestSupport::ChildProcess srctl({"env", display, "setsid", "--wait", SR_STAGE_DIR "/bin/srctl", "doctor"},
                                    agent_.Environment());
    EXPECT_EQ(srctl.Wait(), 0);
    EXPECT_THAT(
        srctl.Output(),
        HasSubstr("note: questions: There is neither a desktop that shows windows nor a terminal here"));
  }
}

TEST_F(DoctorOfTheMachine, SeesThatTheFilesGoToAnotherProgram) {
  agent_.Write("prefix/share/applications/org.example.Viewer.desktop",
               "[Desktop Entry]\nType=Application\nName=Viewer\nExec=true %f\n"
               "MimeType=application/vnd.morvane.servicerecord+xml;\n");
  agent_.Write("home/.config/mimeapps.list",
               "[Default Applications]\n"
               "application/vnd.morvane.servicerecord+xml=org.example.Viewer.desktop\n");
  const std::string line = Line(Srctl({"doctor"}), "file type");
  EXPECT_THAT(line, AllOf(StartsWith("note: "), HasSubstr("org.example.Viewer.desktop"),
                          HasSubstr(" Next: Run: xdg-mime default com.morvane.ServiceRecords.desktop")));
}

TEST_F(DoctorOfTheMachine, SeesThatTheLogHasNoFolder) {
  ASSERT_EQ(Srctl({"logging", "on"}).status, 0);
  fs::remove_all(agent_.LogFile().parent_path());
  agent_.Write("home/Library/Logs", "no folder");
  ExpectProblem(Line(Srctl({"doctor"}), "log"),
                "It is on, but nothing is written: you may not write " + agent_.LogFile().string(),
                "Make it a");
}

TEST_F(DoctorOfTheMachine, NamesADamagedConfiguration) {
  agent_.Write("home/.config/Morvane/ServiceRecords.plist", "<plist><dict>");
  agent_.Write("etc/Morvane/ServiceRecords.plist", "<plist><array/></plist>");
  const SrctlRun run = Srctl({"doctor"});
  EXPECT_EQ(run.status, 1);
  const std::string kept = "keeps it as ServiceRecords.plist.damaged";
  ExpectProblem(Line(run, "configuration of the user"), agent_.StoresFile().string() + " is damaged",
                "Put back");
  EXPECT_THAT(Line(run, "configuration of the user"), HasSubstr(kept));
  EXPECT_THAT(Line(run, "configuration of the machine"),
              AllOf(StartsWith("note: "), HasSubstr(MachineFile() + " is damaged"),
                    HasSubstr("The agent keeps nothing in it")));
  EXPECT_THAT(run.output, HasSubstr("One problem was found.\n"));
}

TEST_F(DoctorOfTheMachine, NamesThePlaceOfTheNextCopyOfADamagedConfiguration) {
  const std::string file = "home/.config/Morvane/ServiceRecords.plist";
  agent_.Write(file, "damaged");
  agent_.Write(file + ".damaged", "an earlier one");
  EXPECT_THAT(Line(Srctl({"doctor"}), "configuration of the user"),
              HasSubstr("keeps it as ServiceRecords.plist.damaged.1 beside"));
  for (char copy = '1'; copy <= '9'; ++copy) agent_.Write(file + ".damaged." + copy, "an earlier one");
  ExpectProblem(Line(Srctl({"doctor"}), "configuration of the user"),
                "saves nothing, because all names for a copy of the damaged one are taken.", "Put back");
}

TEST_F(DoctorOfTheMachine, NamesAConfigurationThatCannotBeRead) {
  fs::create_directories(agent_.StoresFile());
  const SrctlRun run = Srctl({"doctor"});
  EXPECT_EQ(run.status, 1);
  ExpectProblem(
      Line(run, "configuration of the user"),
      agent_.StoresFile().string() + " cannot be read: Is a directory. The agent writes nothing over it.",
      "See that it is a file");
}

TEST_F(DoctorOfTheMachine, TellsOfADamagedConfigurationThatWasKept) {
  agent_.Write("home/.config/Morvane/ServiceRecords.plist", "damaged");
  GiveStores({WorkingStore("s1", "One")});
  const SrctlRun run = Srctl({"doctor"});
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_THAT(Line(run, "configuration of the user"),
              AllOf(StartsWith("note: "), HasSubstr("ServiceRecords.plist.damaged"), HasSubstr(" Next: ")));
}

TEST_F(DoctorOfTheMachine, AnEmptyConfigurationIsNotDamaged) {
  agent_.Write("home/.config/Morvane/ServiceRecords.plist", "");
  EXPECT_EQ(Srctl({"doctor"}).status, 0);
}

TEST_F(DoctorOfTheMachine, GivesItsFindingsInJson) {
  fs::remove_all(PlugIn());
  const SrctlRun run = Srctl({"doctor", "--json"});
  EXPECT_EQ(run.status, 1);
  const json findings = json::parse(run.output);
  EXPECT_EQ(findings["problems"], 1);
  ASSERT_EQ(findings["checks"].size(), 9U);
  EXPECT_EQ(findings["checks"][0], (json{{"result", "ok"},
                                         {"check", "agent"},
                                         {"store", nullptr},
                                         {"text", "It answers on the session bus."},
                                         {"next", nullptr}}));
  EXPECT_EQ(findings["checks"][2]["result"], "problem");
  EXPECT_EQ(findings["checks"][2]["next"], "Install the program again.");
}

TEST_F(DoctorOfTheMachine, GivesJsonAlsoForAFolderWhoseNameIsNotUtf8) {
  std::vector<std::string> environment = agent_.Environment();
  environment.push_back("XDG_CONFIG_DIRS=/\xFF");
  const SrctlRun run = RunSrctl({"doctor", "--json"}, environment);
  EXPECT_THAT(json::parse(run.output)["checks"][7]["text"].get<std::string>(),
              HasSubstr("/\uFFFD/Morvane/ServiceRecords.plist"));
}

}  // namespace
