#include "Commands.h"

#include "SRLib/SRXMLProvider.h"
#include "doctor/DocumentCheck.h"
#include "doctor/DocumentFile.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Files/UserDefaults.h"
#include "libs/Terminal/TerminalText.h"
#include "libs/Text/TextHelpers.h"
#include "print/Reports.h"

#include <filesystem>
#include <iostream>
#include <system_error>

namespace Srctl::Commands {
namespace {

constexpr char kLogLevel[] = "LogLevel";

void WarnIfUnsaved(AgentClient& agent) {
  if (agent.StateOfSavedStores() != AgentClient::kUnsaved) return;
  std::cerr << "srctl: The change is not saved yet: the agent could not write its list, and tries again by "
               "itself. What to do: srctl doctor\n";
}

Status RefuseSetting(const std::filesystem::path& file, const std::error_code& error) {
  // A damaged file is kept beside the new one, under the first of a few names that is free.
  const bool wasKeptTooOften = error == std::errc::file_exists;
  return Refuse(
      "The setting could not be saved in " + Quoted(file.string()) + ": " +
      (wasKeptTooOften
           ? "it is damaged, and so are all its copies. Move one of them away."
           : error.message() +
                 ". See that its disk has room, and that you may read and write the file and its folder."));
}

// The rest of it is read by the agent, as from a server.
void WarnOfErrors(const DocumentCheck::Result& check, const std::string& document) {
  std::cerr
      << "srctl: The document breaks its schema. The agent takes it all the same; what it does not know it "
         "passes over or takes for the default:\n";
  for (const DomLib::DocumentProblem& problem : check.problems)
    std::cerr << "  " << Terminal::OneLine(DocumentCheck::Sentence(problem, document).English()) << ".\n";
  if (check.furtherProblems > 0) std::cerr << "  And " << check.furtherProblems << " more.\n";
}

}  // namespace

Status List(Printing::Format format) {
  return WithAgent([&](AgentClient& agent) {
    const auto stores = agent.AllStores();
    if (!stores) return ReportUnreachable(agent.Problem());
    if (stores->empty() && CannotReadStores(agent)) return RefuseWithoutStores();
    Printing::PrintStores(std::cout, *stores, format);
    return Status::Done;
  });
}

Status Show(const std::string& id, Printing::Format format) {
  return WithAgent([&](AgentClient& agent) {
    const auto store = agent.StoreForID(id);
    if (!store) return ReportUnreachable(agent.Problem());
    if (store->id.empty())
      return RefuseForList(agent, "There is no store with the id " + Quoted(id) + ". Ids: srctl list");
    Printing::PrintStore(std::cout, *store, format);
    return Status::Done;
  });
}

Status Delete(const std::string& id) {
  return WithAgent([&](AgentClient& agent) {
    const auto deleted = agent.DeleteStore(id);
    if (!deleted) return ReportUnreachable(agent.Problem());
    if (!*deleted)
      return RefuseForList(agent, "There is no store with the id " + Quoted(id) + ". Ids: srctl list");
    std::cout << "Deleted the store " << Quoted(id) << ".\n";
    WarnIfUnsaved(agent);
    return Status::Done;
  });
}

Status DefaultGateway(const StoreChoice& store, const std::string& gateway) {
  return WithAgent([&](AgentClient& agent) {
    const auto changed = store.id ? agent.SetDefaultGatewayForStoreID(*store.id, gateway)
                                  : agent.SetDefaultGatewayForStoreURL(*store.url, gateway);
    if (!changed) return ReportUnreachable(agent.Problem());
    if (!*changed) {
      return RefuseForList(agent, "There is no store " + Quoted(store.id ? *store.id : *store.url) +
                                      " with a gateway named " + Quoted(gateway) +
                                      ". Gateways of a store: srctl show ID");
    }
    std::cout << "The default gateway is now " << Quoted(gateway) << ".\n";
    WarnIfUnsaved(agent);
    return Status::Done;
  });
}

Status Discover(const std::string& file) {
  const std::string name = file == "-" ? "standard input" : file;
  std::string document;
  if (const std::string problem = ReadDocument(file, document); !problem.empty()) {
    return Refuse(problem + " Name a file that holds a discovery document, or - for standard input.");
  }
  const DocumentCheck::Result check = DocumentCheck::Check(document);
  if (!check.problem.IsEmpty()) {
    return Refuse("The document was not handed over: " + Terminal::OneLine(check.problem.English()) + "." +
                  (check.next.IsEmpty() ? "" : " " + check.next.English()));
  }
  // The agent would take it, and trust its stores without asking.
  if (!ServiceRecords::SRXMLProvider::IsDiscovery(util::widen(document))) {
    return Refuse(
        "The document was not handed over: " +
        (check.problemWithRoot.IsEmpty()
             ? "it is a service record. Have it opened, which asks you whether to trust its stores: "
               "srctl open FILE"
             : Terminal::OneLine(check.problemWithRoot.English()) + "."));
  }
  // The agent would take what comes before, half a store too.
  if (const DomLib::DocumentProblem* const end = check.End()) {
    return Refuse("The document was not handed over: " +
                  Terminal::OneLine(DocumentCheck::Sentence(*end, name).English()) + ".");
  }
  if (check.HasErrors()) WarnOfErrors(check, name);
  return WithAgent([&](AgentClient& agent) {
    if (!agent.HandOverDiscoveryDocument(document)) return ReportUnreachable(agent.Problem());
    if (CannotReadStores(agent)) return RefuseWithoutStores();
    for (const auto& [id, store] : check.stores) {
      std::cout << "Handed over the store " << Quoted(util::narrow(id)) << " ("
                << Terminal::OneLine(util::narrow(store.GetStoreName())) << ").\n";
    }
    return Status::Done;
  });
}

Status ShowLogging(Printing::Format format) {
  Printing::PrintLogging(std::cout, Files::UserDefaults::Standard().Integer(kLogLevel) != 0, format);
  return Status::Done;
}

Status SetLogging(bool on, Printing::Format format) {
  const auto defaults = Files::UserDefaults::Standard();
  if (defaults.Path().empty()) return Refuse("There is no folder to save the setting in: HOME is not set.");
  if (const std::error_code error = defaults.SetInteger(kLogLevel, on ? 1 : 0))
    return RefuseSetting(defaults.Path(), error);
  const Status told = WithAgent([](AgentClient& agent) {
    return agent.PostNotification(Bus::ServiceNames::kLoggingNotification, "")
               ? Status::Done
               : ReportUnreachable(agent.Problem());
  });
  if (told != Status::Done) {
    std::cerr << "The setting is saved; an agent follows it from its next start.\n";
  } else if (format == Printing::Format::Json) {
    Printing::PrintLogging(std::cout, on, format);
  } else {
    std::cout << "Logging is " << (on ? "on: ~/Library/Logs/ServiceRecord.log" : "off.") << '\n';
  }
  return told;
}

}  // namespace Srctl::Commands
