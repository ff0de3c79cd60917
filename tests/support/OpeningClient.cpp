#include "support/OpeningClient.h"

#include "libs/Bus/ServiceNames.h"

#include <fcntl.h>

#include <stdexcept>
#include <utility>

namespace TestSupport {
namespace {

namespace Names = Bus::ServiceNames;
using PropertyList::Dictionary;

constexpr Bus::Service kOpenings{Names::kServiceRecords, Names::kOpeningsPath, Names::kOpeningsInterface};

template <class Value>
Value Had(Bus::Result<Value> result) {
  if (!result) throw std::runtime_error(result.Failure().name + ": " + result.Failure().text);
  return std::move(*result);
}

std::vector<OpeningClient::Texts> TextsOf(const std::vector<Dictionary>& dictionaries) {
  std::vector<OpeningClient::Texts> all;
  for (const Dictionary& dictionary : dictionaries) {
    OpeningClient::Texts& texts = all.emplace_back();
    for (const auto& entry : dictionary.Entries()) texts[entry.key] = *entry.value.As<std::string>();
  }
  return all;
}

}  // namespace

OpeningClient::OpeningClient(const std::string& address) : bus_(Had(Bus::Connection::To(address))) {
  const std::string rule = std::string("type='signal',interface='") + Names::kOpeningsInterface + "'";
  signals_ = Had(bus_.Match(rule, [this](const Bus::Message& signal) {
    if (signal.IsSignal(Names::kOpeningsInterface, Names::kFinishedSignal)) TakeFinished(signal);
    if (signal.IsSignal(Names::kOpeningsInterface, Names::kStoresChangedSignal)) TakeChanges(signal);
  }));
}

Bus::Result<std::uint64_t> OpeningClient::TryOpen(const std::string& path, const Bus::Options& options) {
  return bus_.Call<std::uint64_t>(kOpenings, {}, "Open", path, options);
}

Bus::Result<std::uint64_t> OpeningClient::TryOpen(const std::string& path, int terminal) {
  Bus::Options options;
  if (terminal >= 0) options["terminal"] = Files::FileDescriptor(::fcntl(terminal, F_DUPFD_CLOEXEC, 0));
  return TryOpen(path, options);
}

std::uint64_t OpeningClient::Open(const std::string& path, int terminal) {
  return Had(TryOpen(path, terminal));
}

OpeningClient::Finished OpeningClient::Await(std::uint64_t id) {
  if (!WaitUntil([&] { return HasFinished(id); })) throw std::runtime_error("the opening does not finish");
  return finished_.at(id);
}

bool OpeningClient::HasFinished(std::uint64_t id) {
  return finished_.contains(id);
}

OpeningClient::Finished OpeningClient::OpenAndAwait(const std::string& path) {
  return Await(Open(path));
}

OpeningClient::Finished OpeningClient::OpenAndAwait(const std::string& path, const Bus::Texts& desktop) {
  Bus::Options options;
  options["desktop"] = desktop;
  return Await(Had(TryOpen(path, options)));
}

bool OpeningClient::WaitUntil(const std::function<bool()>& condition) {
  return Had(bus_.ProcessUntil(condition, std::chrono::steady_clock::now() + std::chrono::seconds(20)));
}

void OpeningClient::TakeFinished(const Bus::Message& signal) {
  const auto [id, outcome, stores] = Had(signal.Read<std::uint64_t, std::string, std::vector<Dictionary>>());
  finished_[id] = {id, outcome, TextsOf(stores)};
  told_.push_back("finished " + outcome);
}

void OpeningClient::TakeChanges(const Bus::Message& signal) {
  for (Texts& change : TextsOf(Had(signal.Read<std::vector<Dictionary>>()))) {
    told_.push_back(change["Change"] + " " + change["StoreID"]);
    changes_.push_back(std::move(change));
  }
}

}  // namespace TestSupport
