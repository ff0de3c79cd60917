#include "doctor/Doctor.h"

#include "bus/AgentClient.h"
#include "doctor/DocumentCheck.h"
#include "doctor/DocumentFile.h"
#include "doctor/Finding.h"
#include "doctor/FindingPrinter.h"
#include "doctor/InstallationChecks.h"
#include "doctor/LocationAnswers.h"
#include "doctor/StoresCheck.h"
#include "libs/Text/TextHelpers.h"
#include "print/Reports.h"

#include <filesystem>
#include <iostream>
#include <optional>

namespace Srctl::Commands {
namespace {

using Result = Finding::Result;

constexpr char kNameSchema[] =
    "Give its root element an xsi:schemaLocation that names serviceRecord.xsd; that of a discovery document "
    "names discovery.";

constexpr char kNoAnswer[] = "the agent does not answer";

Finding Unanswered(const std::string& problem) {
  return {Result::Problem, "agent",
          Wording::Worded("It cannot be reached: {problem}.", {{"problem", problem}}), ReachTheAgent()};
}

// What the agent told, as far as it did.
struct AgentAnswers {
  Finding agent;
  std::optional<std::string> plugIn;
  std::optional<std::string> savedStores;
  std::optional<std::vector<StoreInfo>> stores;
};

AgentAnswers AskAgent(std::optional<AgentClient>& agent, const std::string& problem) {
  AgentAnswers answers{Unanswered(problem), std::nullopt, std::nullopt, std::nullopt};
  if (!agent) return answers;
  answers.plugIn = agent->UIBundlePath();
  if (answers.plugIn) answers.savedStores = agent->StateOfSavedStores();
  if (answers.savedStores) answers.stores = agent->AllStores();
  answers.agent = answers.stores ? Finding{Result::Ok, "agent", "It answers on the session bus."}
                                 : Unanswered(agent->Problem());
  return answers;
}

// The folder in which the agent's programs lie.
std::filesystem::path PlugInsOwner(const std::filesystem::path& plugIn) {
  return plugIn.parent_path().parent_path();
}

Finding NotLookedAt(const std::string& check, const std::string& reason) {
  return {Result::Note, check, "It was not looked at, because " + reason + "."};
}

void CheckSavedStores(const std::string& state, const FindingReport& report) {
  constexpr char kReason[] = "The system log says why: journalctl --user -t ServiceRecords";
  if (state == AgentClient::kUnsaved) {
    report(
        {Result::Problem, "saved stores",
         "The agent could not save its list of stores. It goes on with it and tries again, but what was not "
         "saved is lost when the agent ends.",
         std::string("Make room on the disk, or make the file one that you may write. ") + kReason});
  } else if (state == AgentClient::kUnreadable) {
    report(
        {Result::Problem, "saved stores",
         "The agent could not read the file with your stores. Until it can, which it tries again and again, "
         "its list is empty and cannot be changed.",
         std::string("Make the file one that you may read. ") + kReason});
  }
}

void CheckStores(AgentClient& agent, const std::vector<StoreInfo>& stores, const FindingReport& report) {
  if (stores.empty()) {
    return report({Result::Note, "stores", "There are none yet.",
                   "Open the service-record file that your administrator gave you: srctl open FILE"});
  }
  const LocationAnswers locations(agent, stores);
  std::vector<StoreChecks::Situation> situations;
  situations.reserve(stores.size());
  for (const StoreInfo& store : stores) situations.push_back({store, locations.Of(situations.size())});
  StoreChecks::CheckStores(situations, report);
  if (!situations.back().location.get()) report(Unanswered(agent.Problem()));
}

StoreInfo Described(const ServiceRecords::SRStore& store) {
  StoreInfo info;
  info.id = util::narrow(store.GetStoreID());
  info.name = util::narrow(store.GetStoreName());
  info.url = util::narrow(store.GetStoreURL());
  for (const ServiceRecords::SRGateway& gateway : store.GetGateways()) {
    info.gateways.push_back(
        {util::narrow(gateway.GetName()), util::narrow(gateway.GetLocation()), gateway.GetDefault()});
  }
  return info;
}

std::string CountOf(const ServiceRecords::StoreMap& stores) {
  return stores.size() == 1 ? "one store" : std::to_string(stores.size()) + " stores";
}

// The file itself, before its stores are looked at.
void CheckDocument(const DocumentCheck::Result& check, const std::string& file, const FindingReport& report) {
  using Gravity = DomLib::DocumentProblem::Gravity;
  for (const DomLib::DocumentProblem& problem : check.problems) {
    if (problem.gravity == Gravity::Fatal && !check.problem.IsEmpty()) continue;  // it is told at the end
    const bool isWarning = problem.gravity == Gravity::Warning;
    report({isWarning ? Result::Note : Result::Problem, "document",
            DocumentCheck::Sentence(problem, file).English() + ".",
            isWarning ? kNameSchema : "Correct it there."});
  }
  if (check.furtherProblems > 0) {
    report({Result::Problem, "document",
            file + ": Further problems: " + std::to_string(check.furtherProblems) + ".",
            "Correct those that are told, then run srctl doctor again."});
  }
  if (!check.next.IsEmpty()) {
    return report({Result::Problem, "document", file + " cannot be checked: " + check.problem.English() + ".",
                   check.next.English()});
  }
  const Wording::Message& whole = check.problem.IsEmpty() ? check.problemWithRoot : check.problem;
  if (!whole.IsEmpty()) {
    report({Result::Problem, "document", file + " is no service record: " + whole.English() + ".",
            "Ask whoever wrote it for another one."});
  } else if (!check.namesSchema) {
    report({Result::Note, "document", file + ": It names no schema, so it was only read, and not validated.",
            kNameSchema});
  } else if (check.IsValid()) {
    report({Result::Ok, "document", file + ": It is valid, and describes " + CountOf(check.stores) + "."});
  }
}

bool IsAddress(const std::string& text) {
  return text.find("://") != std::string::npos;
}

Status Finish(Printing::FindingPrinter& printer) {
  printer.Finish();
  return printer.Problems() == 0 ? Status::Done : Status::Refused;
}

}  // namespace

Status Doctor(Printing::Format format) {
  Printing::FindingPrinter printer(std::cout, format);
  const FindingReport report = [&printer](const Finding& finding) { printer.Print(finding); };
  std::string problem;
  std::optional<AgentClient> agent = AgentClient::Connect(problem, SayThatAgentIsLate);
  const AgentAnswers answers = AskAgent(agent, problem);
  report(answers.agent);
  report(InstallationChecks::CheckLog());
  report(answers.plugIn ? InstallationChecks::CheckPlugIn(*answers.plugIn)
                        : NotLookedAt("plug-in", kNoAnswer));
  report(answers.plugIn ? InstallationChecks::CheckCredentialProgram(PlugInsOwner(*answers.plugIn))
                        : NotLookedAt("credentials", kNoAnswer));
  report(answers.plugIn ? InstallationChecks::CheckQuestions(*answers.plugIn)
                        : NotLookedAt("questions", kNoAnswer));
  report(InstallationChecks::CheckFileType());
  report(InstallationChecks::CheckUserConfiguration());
  report(InstallationChecks::CheckMachineConfiguration());
  if (answers.savedStores) CheckSavedStores(*answers.savedStores, report);
  if (!answers.stores) {
    report(NotLookedAt("stores", kNoAnswer));
  } else if (answers.savedStores == AgentClient::kUnreadable) {
    report(NotLookedAt("stores", "the agent could not read the file"));
  } else {
    CheckStores(*agent, *answers.stores, report);
  }
  return Finish(printer);
}

Status DoctorOfStore(const std::string& id, Printing::Format format) {
  return WithAgent([&](AgentClient& agent) {
    const auto store = agent.StoreForID(id);
    if (!store) return ReportUnreachable(agent.Problem());
    if (store->id.empty())
      return RefuseForList(agent, "There is no store with the id " + Quoted(id) + ". Ids: srctl list");
    Printing::FindingPrinter printer(std::cout, format);
    CheckStores(agent, {*store}, [&printer](const Finding& finding) { printer.Print(finding); });
    return Finish(printer);
  });
}

Status DoctorOfRecord(const std::string& place, Printing::Format format) {
  std::vector<StoreChecks::Situation> stores;
  Printing::FindingPrinter printer(std::cout, format);
  const FindingReport report = [&printer](const Finding& finding) { printer.Print(finding); };
  if (IsAddress(place)) {
    stores.emplace_back().store.url = place;
  } else {
    std::string document;
    if (const std::string problem = ReadDocument(place, document); !problem.empty()) {
      return Refuse(problem + " Name a service-record file, or an address that begins with https://.");
    }
    const DocumentCheck::Result check = DocumentCheck::Check(document);
    CheckDocument(check, place, report);
    for (const auto& [id, store] : check.stores) stores.push_back({Described(store), {}});
  }
  StoreChecks::CheckStores(stores, report);
  return Finish(printer);
}

}  // namespace Srctl::Commands
