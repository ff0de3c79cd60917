#include "opening/OpeningReport.h"

#include "bus/FileOpening.h"
#include "libs/Openings/Outcome.h"
#include "libs/Terminal/TerminalText.h"
#include "print/Reports.h"

#include <algorithm>
#include <optional>

namespace Srctl::OpeningReport {
namespace {

using Commands::Quoted;
using Commands::Status;
using Openings::Outcome;

// What became of what the sentence begins with; without a full stop.
std::string Happened(Outcome outcome) {
  switch (outcome) {
    case Outcome::Added:
      return " was added";
    case Outcome::Replaced:
      return " was replaced by the new record";
    case Outcome::Declined:
      return " was declined; nothing was changed";
    case Outcome::ServerNotVerified:
      return " was not added, because its server could not be verified";
    case Outcome::NotAServiceRecord:
      return " is no service record: it cannot be read, or describes no complete store";
    case Outcome::CouldNotAsk:
      return " was not added, because nobody could be asked";
    case Outcome::NotSaved:
      return " is not in the saved list";
    case Outcome::Ended:
      break;
  }
  return " was not added, because the agent was ended before you could decide";
}

std::string NextStep(Outcome outcome, const std::string& file, const std::string& hint) {
  switch (outcome) {
    case Outcome::ServerNotVerified:
    case Outcome::NotAServiceRecord:
      return " What is wrong with it: srctl doctor " + Commands::ShellWord(file);
    case Outcome::CouldNotAsk:
      return " " + hint;
    case Outcome::NotSaved:
      return " What to do: srctl doctor";
    case Outcome::Ended:
      return " Open the file again.";
    default:
      return {};
  }
}

// A reason of several lines ends in a foreign value, without a full stop.
std::string InOneLine(std::string reason) {
  const bool endsInValue = reason.find('\n') != std::string::npos;
  std::ranges::replace(reason, '\n', ' ');
  return Terminal::OneLine(reason) + (endsInValue ? "." : "");
}

std::string Line(const std::string& what, const std::string& name, const std::string& reason,
                 const std::string& file, const std::string& hint) {
  const std::optional<Outcome> outcome = Openings::OutcomeOf(name);
  const std::string happened =
      outcome ? Happened(*outcome) : " became what this srctl does not know: " + Quoted(name);
  const std::string why = reason.empty() ? "" : " " + InOneLine(reason);
  return what + happened + "." + why + (outcome ? NextStep(*outcome, file, hint) : "");
}

}  // namespace

Status StatusOf(const std::string& name) {
  const std::optional<Outcome> outcome = Openings::OutcomeOf(name);
  if (!outcome) return Status::Refused;
  switch (*outcome) {
    case Outcome::Added:
    case Outcome::Replaced:
      return Status::Done;
    case Outcome::Declined:
      return Status::Declined;
    case Outcome::ServerNotVerified:
      return Status::NotVerified;
    case Outcome::NotAServiceRecord:
      return Status::NotAServiceRecord;
    case Outcome::CouldNotAsk:
      return Status::CouldNotAsk;
    case Outcome::NotSaved:
      return Status::NotSaved;
    case Outcome::Ended:
      break;
  }
  return Status::Ended;
}

std::string OfStore(const OpenedStore& store, const std::string& file, const std::string& hint) {
  return Line(Quoted(store.name) + " (" + Terminal::OneLine(store.id) + ")", store.outcome, store.reason,
              file, hint);
}

std::string OfFile(const std::string& outcome, const std::string& reason, const std::string& file,
                   const std::string& hint) {
  if (outcome == Openings::NameOf(Outcome::NotAServiceRecord) && !reason.empty())
    return Quoted(file) + " was not opened, because the agent cannot read it. " + InOneLine(reason);
  return Line(Quoted(file), outcome, reason, file, hint);
}

}  // namespace Srctl::OpeningReport
