#include "opening/OpenCommand.h"

#include "bus/FileOpening.h"
#include "libs/Display/DisplayVariables.h"
#include "libs/Text/TextHelpers.h"
#include "opening/OpeningReport.h"
#include "opening/OwnDesktop.h"
#include "opening/OwnTerminal.h"
#include "print/Reports.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <utility>

namespace Srctl::Commands {
namespace {

using End = FileOpening::End;

struct NamedFile {
  std::string given;
  std::string path;  // absolute
};

// Why the file cannot be opened; empty when it can.
std::string ProblemWithFile(const std::string& file) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(file, error);
  if (status.type() == std::filesystem::file_type::not_found) return "There is no file " + Quoted(file) + ".";
  if (error) return Quoted(file) + " cannot be read: " + error.message() + ".";
  if (!std::filesystem::is_regular_file(status))
    return Quoted(file) + " is not a file that holds a document.";
  if (!std::ifstream(file)) return Quoted(file) + " cannot be read: " + std::strerror(errno) + ".";
  return {};
}

// Why not all can be handed over; empty when they can.
std::string Locate(const std::vector<std::string>& given, std::vector<NamedFile>& files) {
  for (const std::string& file : given) {
    if (const std::string problem = ProblemWithFile(file); !problem.empty())
      return problem + " Name the service-record file that your administrator gave you.";
    std::error_code error;
    const std::filesystem::path place = std::filesystem::absolute(file, error);
    if (error) return "The folder that srctl runs in is gone. Name the file by its full path.";
    if (!util::IsUTF8(place.string()))
      return "The name of " + Quoted(place.string()) + " is not UTF-8; rename the file or its folder.";
    files.push_back({file, place.string()});
  }
  return {};
}

Status RefuseToAsk(const std::string& problem) {
  static_cast<void>(Refuse(problem));
  return Status::CouldNotAsk;
}

// Opens files one after the other.
class OpeningRun {
 public:
  explicit OpeningRun(std::optional<OwnTerminal> terminal) : terminal_(std::move(terminal)) {}

  // False when nothing more is to be opened.
  [[nodiscard]] bool Open(const NamedFile& file) {
    std::optional<FileOpening> opening(std::in_place);
    TellWhereItIsAsked();
    const End end = opening->Run(file.path, terminal_ ? terminal_->Descriptor() : -1);
    switch (end) {
      case End::Finished:
        Report(*opening, file.given);
        return true;
      case End::Withdrawn:
        opening.reset();
        EndByInterrupt();
        return false;
      case End::AgentLeft:
        if (terminal_) terminal_->TakeBack();
        static_cast<void>(Refuse("The agent ended before it told what became of " + Quoted(file.given) +
                                 ". Open the file again."));
        Note(Status::Ended);
        return false;
      case End::TooMany:
        Note(Refuse("The agent is opening many files already, so it did not take " + Quoted(file.given) +
                    ". Answer the questions that are open, then open the file again."));
        return false;
      case End::Unreachable:
        break;
    }
    status_ = ReportUnreachable(opening->Problem());
    return false;
  }

  [[nodiscard]] Status Outcome() const { return status_; }

 private:
  void TellWhereItIsAsked() const {
    if (!terminal_ && ::isatty(STDERR_FILENO) == 1)
      std::cerr << "You are asked in a window. Ctrl+C withdraws the question.\n";
  }

  [[nodiscard]] std::string Hint(const std::string& file) const {
    return terminal_
               ? "What is wrong: srctl doctor"
               : "Be asked on the terminal that you type this on: srctl open --terminal " + ShellWord(file);
  }

  void Report(const FileOpening& opening, const std::string& file) {
    if (opening.Stores().empty())
      Say(opening.Outcome(), OpeningReport::OfFile(opening.Outcome(), opening.Reason(), file, Hint(file)));
    for (const OpenedStore& store : opening.Stores())
      Say(store.outcome, OpeningReport::OfStore(store, file, Hint(file)));
    Note(OpeningReport::StatusOf(opening.Outcome()));
  }

  static void Say(const std::string& outcome, const std::string& sentence) {
    const bool isDone = OpeningReport::StatusOf(outcome) == Status::Done;
    if (isDone) {
      std::cout << sentence << std::endl;
    } else {
      std::cerr << "srctl: " << sentence << '\n';
    }
  }

  // The statuses are in the order of their gravity.
  void Note(Status status) { status_ = std::max(status_, status); }

  // As a shell expects it, which ends its loops then.
  void EndByInterrupt() const {
    if (terminal_) terminal_->TakeBack();
    std::cerr << "\nsrctl: The question was withdrawn. Stores that you had accepted by then: srctl list\n";
    std::cout.flush();
    sigset_t interrupt;
    ::sigemptyset(&interrupt);
    ::sigaddset(&interrupt, SIGINT);
    std::signal(SIGINT, SIG_DFL);
    ::raise(SIGINT);
    ::pthread_sigmask(SIG_UNBLOCK, &interrupt, nullptr);
  }

  std::optional<OwnTerminal> terminal_;
  Status status_ = Status::Done;
};

Status TakeTerminal(std::optional<OwnTerminal>& terminal) {
  terminal = OwnTerminal::Find();
  if (!terminal) {
    return RefuseToAsk(
        "There is no terminal here to ask you on. Over SSH, ask for one (ssh -t); to be asked on your "
        "desktop, use srctl open --window.");
  }
  if (!terminal->IsOurs()) {
    return RefuseToAsk(
        "It runs in the background of its terminal, where you cannot answer. Run it in the foreground (fg), "
        "or use srctl open --window.");
  }
  return Status::Done;
}

// Takes the terminal where the desktop that is named shows no windows. Where it cannot be taken, the agent
// finds out: it may have a desktop of its own.
Status TakeTerminalInsteadOfDesktop(std::optional<OwnTerminal>& terminal) {
  std::optional<OwnTerminal> own = OwnTerminal::Find();
  if (!own || !own->IsOurs()) return Status::Done;
  return WithAgent([&own, &terminal](AgentClient& agent) {
    const std::optional<std::string> plugIn = agent.UIBundlePath();
    if (!plugIn) return ReportUnreachable(agent.Problem());
    if (!OwnDesktop::ShowsWindows(*plugIn)) terminal = std::move(own);
    return Status::Done;
  });
}

// Takes the terminal where the user is asked there.
Status Prepare(QuestionPlace place, std::optional<OwnTerminal>& terminal) {
  if (place == QuestionPlace::Window) return Status::Done;
  if (place == QuestionPlace::Terminal || Display::OfThisProcess().empty()) return TakeTerminal(terminal);
  return TakeTerminalInsteadOfDesktop(terminal);
}

}  // namespace

Status Open(const std::vector<std::string>& given, QuestionPlace place) {
  std::vector<NamedFile> files;
  if (const std::string problem = Locate(given, files); !problem.empty()) return Refuse(problem);
  std::optional<OwnTerminal> terminal;
  if (const Status prepared = Prepare(place, terminal); prepared != Status::Done) return prepared;
  if (terminal) terminal->Lend();
  OpeningRun run(std::move(terminal));
  bool goesOn = true;
  for (const NamedFile& file : files) {
    if (goesOn) {
      goesOn = run.Open(file);
    } else {
      static_cast<void>(Refuse(Quoted(file.given) + " was not opened."));
    }
  }
  return run.Outcome();
}

}  // namespace Srctl::Commands
