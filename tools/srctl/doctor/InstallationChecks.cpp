#include "doctor/InstallationChecks.h"

#include "libs/Bus/ServiceNames.h"
#include "libs/Desktop/DesktopIntegration.h"
#include "libs/Files/AtomicFile.h"
#include "libs/Files/PreferencePath.h"
#include "libs/Files/PropertyListFile.h"
#include "libs/Files/StandardDirectories.h"
#include "libs/Files/UserDefaults.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/SRUIProtocol/PlugInDescription.h"
#include "opening/OwnDesktop.h"
#include "opening/OwnTerminal.h"

#include <fcntl.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <utility>

namespace Srctl::InstallationChecks {
namespace {

namespace fs = std::filesystem;
using Result = Finding::Result;

constexpr char kReinstall[] = "Install the program again.";

// Why the program cannot be run; empty when it can.
std::string ProblemWithProgram(const fs::path& program) {
  std::error_code error;
  if (!fs::is_regular_file(program, error)) return program.string() + " is missing";
  if (::access(program.c_str(), X_OK) != 0) return program.string() + " may not be run";
  return {};
}

// Why the plug-in cannot be used; empty when it can.
std::string ProblemWithPlugIn(const fs::path& folder) {
  std::error_code error;
  if (!fs::is_directory(folder, error)) return "there is no folder " + folder.string();
  const std::string file = (folder / "Info.plist").string();
  const std::optional<SRUI::PlugInDescription> description = SRUI::PlugInDescription::Read(folder);
  if (!description) return file + " is missing or cannot be read";
  if (!description->NamesProtocol())
    return file + " does not name the protocol " + SRUI::PlugInDescription::kProtocol;
  if (!description->Module()) return "the module that " + file + " names is not in its folder";
  for (const char* name : {"servicerecord-dialog", "servicerecord-dialog-window"}) {
    const std::string problem = ProblemWithProgram(folder / name);
    if (!problem.empty()) return "the dialog program " + problem;
  }
  return {};
}

// With a slash at its end, a folder.
bool MayWrite(const fs::path& path) {
  return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

enum class FileState { Missing, Readable, Unreadable, Damaged };

struct LookAtFile {
  FileState state;
  std::string text;
};

LookAtFile LookAt(const fs::path& file) {
  std::error_code error;
  const std::optional<std::string> content = Files::AtomicFile::Read(file, error);
  if (!content && Files::AtomicFile::IsMissing(error)) {
    return {FileState::Missing, "There is none, which is fine: " + file.string()};
  }
  if (!content) return {FileState::Unreadable, file.string() + " cannot be read: " + error.message() + "."};
  const std::optional<PropertyList::Value> root = PropertyList::Read(*content);
  if (!content->empty() && (!root || root->As<PropertyList::Dictionary>() == nullptr)) {
    return {FileState::Damaged,
            file.string() + " is damaged: it is no property list with a dictionary at its root."};
  }
  return {FileState::Readable, "It can be read: " + file.string()};
}

// The copies of damaged files beside the file.
struct Copies {
  std::string last;      // the path of the latest; empty when there is none
  std::string nextName;  // of the next; empty when there can be none
};

Copies LookForCopies(const fs::path& file) {
  std::error_code error;
  Copies copies;
  for (const std::string& name : Files::PropertyListFile(file).DamagedNames()) {
    const fs::path copy = file.parent_path() / name;
    const bool isTaken = fs::exists(fs::symlink_status(copy, error));
    if (isTaken) copies.last = copy.string();
    if (!isTaken && copies.nextName.empty()) copies.nextName = name;
  }
  return copies;
}

}  // namespace

Finding CheckLog() {
  const std::optional<fs::path> logs = Files::StandardDirectories::Logs();
  if (!logs) {
    return {Result::Problem, "log", "There is no folder for it: HOME is not set.",
            "Set HOME to your home folder."};
  }
  const std::string file = (*logs / "ServiceRecord.log").string();
  if (Files::UserDefaults::Standard().Integer("LogLevel") == 0)
    return {Result::Ok, "log", "It is off. When it is on (srctl logging on), it is written to " + file + "."};
  std::error_code error;
  const fs::file_status status = fs::symlink_status(file, error);
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    return {Result::Problem, "log", "It is on, but nothing is written: " + file + " is no regular file.",
            "Remove it, then end the agent, which looks for it at its start (pkill -x ServiceRecords)."};
  }
  if (fs::exists(*logs, error) && !MayWrite(fs::exists(status) ? fs::path(file) : *logs / "")) {
    return {Result::Problem, "log", "It is on, but nothing is written: you may not write " + file + ".",
            "Make it a file that you may write, in a folder that you may write in."};
  }
  return {Result::Ok, "log", "It is on: " + file};
}

Finding CheckCredentialProgram(const fs::path& folder) {
  const fs::path program = folder / "servicerecord-credential";
  const std::string problem = ProblemWithProgram(program);
  if (problem.empty()) return {Result::Ok, "credentials", "Their program can be run: " + program.string()};
  return {Result::Problem, "credentials", "No server that asks for a log-on gets one: " + problem + ".",
          kReinstall};
}

Finding CheckQuestions(const fs::path& plugIn) {
  if (OwnDesktop::ShowsWindows(plugIn)) {
    return {Result::Ok, "questions", "srctl open has you asked in a window of your desktop."};
  }
  const std::optional<OwnTerminal> terminal = OwnTerminal::Find();
  if (!terminal) {
    return {
        Result::Note, "questions",
        "There is neither a desktop that shows windows nor a terminal here, so srctl open cannot have you "
        "asked.",
        "Run srctl on your desktop or on a terminal (over SSH: ssh -t)."};
  }
  if (!terminal->IsOurs()) {
    return {Result::Note, "questions",
            "srctl runs in the background of its terminal, where you cannot answer.",
            "Run it in the foreground (fg)."};
  }
  return {Result::Ok, "questions", "srctl open has you asked on this terminal."};
}

Finding CheckFileType() {
  const std::string own = std::string(Bus::ServiceNames::kServiceRecords) + ".desktop";
  const std::string handler = Desktop::DefaultHandler("cr");
  if (handler == own) return {Result::Ok, "file type", "The desktop opens .cr files with this program."};
  return {
      Result::Note, "file type",
      handler.empty() ? "The desktop does not know what to open .cr files with."
                      : "The desktop opens .cr files with another program: " + handler + ".",
      "Run: xdg-mime default " + own +
          " application/vnd.morvane.servicerecord+xml (if that does not help, install the program again)"};
}

Finding CheckPlugIn(const fs::path& bundle) {
  const std::string problem = ProblemWithPlugIn(bundle);
  if (problem.empty())
    return {Result::Ok, "plug-in", "The plug-in of the dialogs is complete: " + bundle.string()};
  return {Result::Problem, "plug-in",
          "The agent cannot ask you anything, so no store can be added: " + problem + ".", kReinstall};
}

Finding CheckUserConfiguration() {
  const fs::path file = Files::PreferencePath(true);
  const LookAtFile look = LookAt(file);
  const Copies copies = LookForCopies(file);
  Finding finding{Result::Ok, "configuration of the user", {}};
  std::string text = look.text;
  if (look.state == FileState::Unreadable) {
    finding.result = Result::Problem;
    text += " The agent writes nothing over it.";
    finding.next = "See that it is a file that you may read, then run srctl doctor again.";
  } else if (look.state == FileState::Damaged) {
    finding.result = Result::Problem;
    text += " The agent goes on as if it were empty, and ";
    text += copies.nextName.empty()
                ? "saves nothing, because all names for a copy of the damaged one are taken."
                : "at its next change keeps it as " + copies.nextName + " beside the new one.";
    finding.next =
        "Put back a copy of the file, or move it away and open your service-record files again (srctl open "
        "FILE).";
  } else if (look.state == FileState::Readable && !copies.last.empty()) {
    finding.result = Result::Note;
    text += ". An earlier one was damaged and is kept as " + copies.last + ".";
    finding.next = "When no store is missing (srctl list), remove the damaged one.";
  }
  finding.text = std::move(text);
  return finding;
}

Finding CheckMachineConfiguration() {
  const LookAtFile look = LookAt(Files::PreferencePath(false));
  Finding finding{Result::Ok, "configuration of the machine", {}};
  std::string text = look.text;
  if (look.state == FileState::Unreadable || look.state == FileState::Damaged) {
    finding.result = Result::Note;
    text += " The agent keeps nothing in it, so nothing is lost.";
    finding.next = "Tell the administrator of this machine.";
  }
  finding.text = std::move(text);
  return finding;
}

}  // namespace Srctl::InstallationChecks
