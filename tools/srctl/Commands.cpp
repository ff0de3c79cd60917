#include "Commands.h"

#include "AgentClient.h"
#include "DocumentCheck.h"
#include "SRLib/TextHelpers.h"
#include "TerminalText.h"
#include "UserDefaults.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace commands {
namespace {

constexpr char kLogLevel[] = "LogLevel";
constexpr char kLoggingChanged[] = "com.morvane.quillon.ServiceRecordsLoggingConfigurationDidChange";

Status Refuse(const std::string& message) {
  std::cerr << "srctl: " << message << '\n';
  return Status::Refused;
}

Status ReportUnreachable(const std::string& problem) {
  std::cerr
      << "srctl: The agent cannot be reached: " << terminal::Visible(problem)
      << ".\nRun srctl in a desktop session in which the agent is installed. Its system log says why it does "
         "not start: journalctl --user -t ServiceRecords\n";
  return Status::Unreachable;
}

std::string Quoted(const std::string& text) {
  return "\"" + terminal::Visible(text) + "\"";
}

// Connects and hands the agent to `use`, which returns what is to be reported.
template <class Use>
Status WithAgent(Use use) {
  std::string problem;
  std::optional<AgentClient> agent = AgentClient::Connect(problem);
  return agent ? use(*agent) : ReportUnreachable(problem);
}

// Why the file cannot be opened; empty when it can.
std::string ProblemWithFile(const std::string& file) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(file, error);
  if (!std::filesystem::exists(status)) return "There is no file " + Quoted(file) + ".";
  if (!std::filesystem::is_regular_file(status))
    return Quoted(file) + " is not a file that holds a document.";
  if (!std::ifstream(file)) return Quoted(file) + " cannot be read: " + std::strerror(errno) + ".";
  if (!util::IsUTF8(file))
    return "The name of " + Quoted(file) + " is not UTF-8; rename the file and try again.";
  return {};
}

bool ReadAll(const std::string& file, std::string& content) {
  std::ifstream opened;
  if (file != "-") opened.open(file, std::ios::binary);
  std::istream& in = file == "-" ? std::cin : opened;
  content.assign(std::istreambuf_iterator<char>(in), {});
  return !in.bad() && (file == "-" || opened.is_open());
}

}  // namespace

Status Open(const std::string& file) {
  if (const std::string problem = ProblemWithFile(file); !problem.empty()) {
    return Refuse(problem + " Name the service-record file that your administrator gave you.");
  }
  return WithAgent([&](AgentClient& agent) {
    const std::optional<bool> accepted = agent.OpenFile(std::filesystem::absolute(file).string());
    if (!accepted) return ReportUnreachable(agent.Problem());
    if (!*accepted) {
      return Refuse(
          "No store of " + Quoted(file) +
          " was added. To see why, switch the log on (srctl logging on), open the file again and read "
          "~/Library/Logs/ServiceRecord.log");
    }
    std::cout << "The stores of " << Quoted(file) << " were added. See them with: srctl list\n";
    return Status::Done;
  });
}

Status List(printing::Format format) {
  return WithAgent([&](AgentClient& agent) {
    const auto stores = agent.AllStores();
    if (!stores) return ReportUnreachable(agent.Problem());
    printing::PrintStores(std::cout, *stores, format);
    return Status::Done;
  });
}

Status Show(const std::string& id, printing::Format format) {
  return WithAgent([&](AgentClient& agent) {
    const auto store = agent.StoreForID(id);
    if (!store) return ReportUnreachable(agent.Problem());
    if (store->id.empty()) return Refuse("There is no store with the id " + Quoted(id) + ". Ids: srctl list");
    printing::PrintStore(std::cout, *store, format);
    return Status::Done;
  });
}

Status Delete(const std::string& id) {
  return WithAgent([&](AgentClient& agent) {
    const auto deleted = agent.DeleteStore(id);
    if (!deleted) return ReportUnreachable(agent.Problem());
    if (!*deleted) return Refuse("There is no store with the id " + Quoted(id) + ". Ids: srctl list");
    std::cout << "Deleted the store " << Quoted(id) << ".\n";
    return Status::Done;
  });
}

Status DefaultGateway(const StoreChoice& store, const std::string& gateway) {
  return WithAgent([&](AgentClient& agent) {
    const auto changed = store.id ? agent.SetDefaultGatewayForStoreID(*store.id, gateway)
                                  : agent.SetDefaultGatewayForStoreURL(*store.url, gateway);
    if (!changed) return ReportUnreachable(agent.Problem());
    if (!*changed) {
      return Refuse("There is no store " + Quoted(store.id ? *store.id : *store.url) +
                    " with a gateway named " + Quoted(gateway) + ". Gateways of a store: srctl show ID");
    }
    std::cout << "The default gateway is now " << Quoted(gateway) << ".\n";
    return Status::Done;
  });
}

Status Discover(const std::string& file) {
  std::string document;
  if (!ReadAll(file, document))
    return Refuse(Quoted(file) + " cannot be read: " + std::strerror(errno) + ".");
  const documentcheck::Result check = documentcheck::Check(document);
  if (!check.problem.empty()) {
    return Refuse("The document was not handed over: " + check.problem + ".");
  }
  return WithAgent([&](AgentClient& agent) {
    if (!agent.HandOverDiscoveryDocument(document)) return ReportUnreachable(agent.Problem());
    for (const auto& [id, store] : check.stores) {
      std::cout << "Handed over the store " << Quoted(util::narrow(id)) << " ("
                << terminal::Visible(util::narrow(store.GetStoreName())) << ").\n";
    }
    return Status::Done;
  });
}

Status ShowLogging(printing::Format format) {
  printing::PrintLogging(std::cout, UserDefaults::Standard().Integer(kLogLevel) != 0, format);
  return Status::Done;
}

Status SetLogging(bool on) {
  if (!UserDefaults::Standard().SetInteger(kLogLevel, on ? 1 : 0)) {
    return Refuse(
        "The setting could not be saved. Check that your configuration folder (~/.config) is writable.");
  }
  const Status told = WithAgent([](AgentClient& agent) {
    return agent.PostNotification(kLoggingChanged, "") ? Status::Done : ReportUnreachable(agent.Problem());
  });
  if (told == Status::Done) {
    std::cout << "Logging is " << (on ? "on: ~/Library/Logs/ServiceRecord.log" : "off.") << '\n';
  } else {
    std::cerr << "The setting is saved; an agent follows it from its next start.\n";
  }
  return told;
}

}  // namespace commands
