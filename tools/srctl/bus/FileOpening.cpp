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
  const bool isOver = talk_.Run({SIGINT}, "it could not be asked", [&] {
    const Bus::Result<> result = AddMatches();
    return result ? Ask(absolutePath, terminal) : result;
  });
  return isOver ? end_ : End::Unreachable;
}

Bus::Result<> FileOpening::AddMatches() {
  const std::string finished = std::string("type='signal',path='") + Names::kOpeningsPath + "',interface='" +
                               Names::kOpeningsInterface + "',member='" + Names::kFinishedSignal + "'";
  Bus::Result<> result =
      talk_.AddMatch(finished, [this](const Bus::Message& signal) { HandleFinished(signal); });
  if (!result) return result;
  return talk_.AddOwnerAndLoss([this](const Bus::Message& signal) { HandleOwner(signal); });
}

Bus::Result<> FileOpening::Ask(const std::string& absolutePath, int terminal) {
  Bus::Options options;
  // Beside a terminal, too: the main client comes forward there.
  options.emplace("desktop", Display::ByName(Display::OfThisProcess()));
  if (terminal >= 0)
    options.emplace("terminal", Files::FileDescriptor(::fcntl(terminal, F_DUPFD_CLOEXEC, 0)));
  return talk_.AddCall(talk_.Bus().CallAsync(
      kOpenings, {.timeOut = kAnswerTime}, "Open",
      [this](const Bus::Result<Bus::Message>& reply) { HandleReply(reply); }, absolutePath, options));
}

void FileOpening::Finish(End end) {
  end_ = end;
  talk_.Finish();
}

void FileOpening::HandleReply(const Bus::Result<Bus::Message>& reply) {
  if (!reply && reply.Failure().IsOfLimits()) return Finish(End::TooMany);
  if (!reply) return talk_.Fail(reply.Failure().text);
  const auto id = reply->Read<std::uint64_t>();
  if (!id) return talk_.Fail("its answer cannot be read: " + id.Failure().text);
  agent_ = reply->Sender();
  id_ = *id;
}

void FileOpening::HandleFinished(const Bus::Message& signal) {
  const auto finished = signal.Read<std::uint64_t, std::string, std::vector<Dictionary>>();
  if (!id_ || signal.Sender() != agent_) return;
  if (!finished || !ReadStores(std::get<2>(*finished), stores_, reason_)) {
    return talk_.Fail("what it tells of the file cannot be read");
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
