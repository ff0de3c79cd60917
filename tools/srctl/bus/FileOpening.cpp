#include "bus/FileOpening.h"

#include "bus/DictionaryEntries.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Display/DisplayVariables.h"

#include <fcntl.h>

#include <chrono>
#include <csignal>
#include <utility>

namespace Srctl {
namespace {

namespace Names = Bus::ServiceNames;
using PropertyList::Dictionary;

// The agent may first have to be started; it replies before it looks at the file.
constexpr std::chrono::seconds kAnswerTime{60};
constexpr Bus::Service kOpenings{Names::kServiceRecords, Names::kOpeningsPath, Names::kOpeningsInterface};

bool ReadStore(const Dictionary& dictionary, OpenedStore& store) {
  DictionaryEntries entries(dictionary);
  entries.Take("StoreID", store.id);
  entries.Take("StoreName", store.name);
  entries.Take("Outcome", store.outcome);
  entries.Take("Reason", store.reason);
  return entries.AreAsExpected();
}

// What is of no store is of the file.
bool ReadStores(const std::vector<Dictionary>& dictionaries, std::vector<OpenedStore>& stores,
                std::string& reason) {
  for (const Dictionary& dictionary : dictionaries) {
    OpenedStore store;
    if (!ReadStore(dictionary, store)) return false;
    if (store.outcome.empty()) {
      reason = store.reason;
    } else {
      stores.push_back(std::move(store));
    }
  }
  return true;
}

}  // namespace

FileOpening::End FileOpening::Run(const std::string& absolutePath, int terminal) {
  bus_ = BusLoop::Make({SIGINT}, problem_);
  if (!bus_) return End::Unreachable;
  Bus::Result<> result = AddMatches();
  if (result) result = Ask(absolutePath, terminal);
  if (!result) {
    problem_ = "it could not be asked: " + result.Failure().text;
    return End::Unreachable;
  }
  if (const Bus::Result<> run = bus_->Loop().Run(); !run) {
    problem_ = "the connection to it broke: " + run.Failure().text;
    return End::Unreachable;
  }
  return end_;
}

Bus::Result<> FileOpening::AddMatches() {
  const std::string finished = std::string("type='signal',path='") + Names::kOpeningsPath + "',interface='" +
                               Names::kOpeningsInterface + "',member='" + Names::kFinishedSignal + "'";
  Bus::Result<> result =
      bus_->AddMatch(finished, [this](const Bus::Message& signal) { HandleFinished(signal); });
  if (result) {
    result = bus_->AddMatch(Bus::MatchOwnerOf(Names::kServiceRecords),
                            [this](const Bus::Message& signal) { HandleOwner(signal); });
  }
  if (result) {
    result = bus_->AddMatch(Bus::MatchLoss(), [this](const Bus::Message& /*signal*/) {
      FinishUnreachable("the session bus is gone");
    });
  }
  return result;
}

Bus::Result<> FileOpening::Ask(const std::string& absolutePath, int terminal) {
  Bus::Options options;
  // Beside a terminal, too: the main client comes forward there.
  options.emplace("desktop", Display::ByName(Display::OfThisProcess()));
  if (terminal >= 0)
    options.emplace("terminal", Files::FileDescriptor(::fcntl(terminal, F_DUPFD_CLOEXEC, 0)));
  return bus_->AddCall(bus_->Bus().CallAsync(
      kOpenings, {.timeOut = kAnswerTime}, "Open",
      [this](const Bus::Result<Bus::Message>& reply) { HandleReply(reply); }, absolutePath, options));
}

void FileOpening::Finish(End end) {
  end_ = end;
  bus_->Loop().End();
}

void FileOpening::FinishUnreachable(const std::string& problem) {
  problem_ = problem;
  Finish(End::Unreachable);
}

void FileOpening::HandleReply(const Bus::Result<Bus::Message>& reply) {
  if (!reply && reply.Failure().IsOfLimits()) return Finish(End::TooMany);
  if (!reply) return FinishUnreachable(reply.Failure().text);
  const auto id = reply->Read<std::uint64_t>();
  if (!id) return FinishUnreachable("its answer cannot be read: " + id.Failure().text);
  agent_ = reply->Sender();
  id_ = *id;
}

void FileOpening::HandleFinished(const Bus::Message& signal) {
  const auto finished = signal.Read<std::uint64_t, std::string, std::vector<Dictionary>>();
  if (!id_ || signal.Sender() != agent_) return;
  if (!finished || !ReadStores(std::get<2>(*finished), stores_, reason_)) {
    return FinishUnreachable("what it tells of the file cannot be read");
  }
  if (std::get<0>(*finished) != *id_) return;
  outcome_ = std::get<1>(*finished);
  Finish(End::Finished);
}

void FileOpening::HandleOwner(const Bus::Message& signal) {
  const auto change = signal.Read<std::string, std::string, std::string>();
  if (change && id_ && std::get<1>(*change) == agent_) Finish(End::AgentLeft);
}

}  // namespace Srctl
