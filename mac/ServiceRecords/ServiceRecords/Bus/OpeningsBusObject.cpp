#include "Bus/OpeningsBusObject.h"

#include "Process/FileOpenings.h"
#include "libs/Bus/BusText.h"
#include "libs/Bus/ServiceNames.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

using PropertyList::Dictionary;
using ServiceRecords::ListChange;
using ServiceRecords::Opening;

namespace Agent {
namespace {

constexpr char kTerminalOption[] = "terminal";
constexpr char kDesktopOption[] = "desktop";

bool IsTerminal(const Files::FileDescriptor& descriptor) {
  const int flags = descriptor ? ::fcntl(descriptor.Get(), F_GETFL) : -1;
  return flags >= 0 && (flags & O_ACCMODE) == O_RDWR && ::isatty(descriptor.Get()) == 1;
}

Display::Variables VariablesOf(const Bus::Texts& texts) {
  Display::Variables variables;
  for (const auto& [name, value] : texts) variables.push_back(std::string(name).append("=").append(value));
  return Display::Among(variables);
}

std::string NameOf(ListChange::Kind kind) {
  switch (kind) {
    case ListChange::Kind::Added:
      return "added";
    case ListChange::Kind::Replaced:
      return "replaced";
    case ListChange::Kind::Confirmed:
      return "confirmed";
    case ListChange::Kind::Deleted:
      return "deleted";
    case ListChange::Kind::DefaultGateway:
      break;
  }
  return "default-gateway";
}

Dictionary Described(const ListChange& change) {
  Dictionary dictionary{{"Change", NameOf(change.kind)},
                        {"StoreID", Bus::Text(change.id)},
                        {"StoreName", Bus::Text(change.name)},
                        {"StoreURL", Bus::Text(change.url)}};
  if (change.kind == ListChange::Kind::DefaultGateway) {
    dictionary.Set("GatewayName", Bus::Text(change.defaultGateway));
  }
  return dictionary;
}

std::vector<Dictionary> Described(const Opening& opening) {
  std::vector<Dictionary> dictionaries;
  const std::vector<Opening::Store> stores = opening.Stores();
  if (stores.empty() && !opening.ReasonWithoutStores().empty())
    return {{{"Reason", Bus::Text(opening.ReasonWithoutStores())}}};
  for (const Opening::Store& store : stores) {
    Dictionary& dictionary =
        dictionaries.emplace_back(Dictionary{{"StoreID", Bus::Text(store.id)},
                                             {"StoreName", Bus::Text(store.name)},
                                             {"StoreURL", Bus::Text(store.url)},
                                             {"Outcome", std::string(Openings::NameOf(store.outcome))}});
    if (!store.reason.empty()) dictionary.Set("Reason", Bus::Text(store.reason));
  }
  return dictionaries;
}

}  // namespace

Bus::Result<> OpeningsBusObject::Serve() {
  Bus::Interface interface(Bus::ServiceNames::kOpeningsInterface);
  interface.Method("Open", {"path", "options"}, {"id"},
                   [this](const Bus::Caller& caller, const std::string& path, Bus::Options options) {
                     return Open(caller, path, std::move(options));
                   });
  interface.Signal<std::uint64_t, std::string, std::vector<Dictionary>>(Bus::ServiceNames::kFinishedSignal,
                                                                        {"id", "outcome", "stores"});
  interface.Signal<std::vector<Dictionary>>(Bus::ServiceNames::kStoresChangedSignal, {"changes"});
  return Bus::Keep(object_, bus_.Serve(Bus::ServiceNames::kOpeningsPath, std::move(interface)));
}

Bus::Result<std::uint64_t> OpeningsBusObject::Open(const Bus::Caller& caller, const std::string& path,
                                                   Bus::Options options) {
  Files::FileDescriptor terminal;
  if (const auto option = options.find(kTerminalOption); option != options.end()) {
    auto* const given = std::get_if<Files::FileDescriptor>(&option->second);
    if (given == nullptr || !IsTerminal(*given))
      return Bus::Error::InvalidArguments("the option is no terminal");
    terminal = std::move(*given);
  }
  Display::Variables desktop;
  if (const auto option = options.find(kDesktopOption); option != options.end()) {
    const auto* const given = std::get_if<Bus::Texts>(&option->second);
    if (given == nullptr) return Bus::Error::InvalidArguments("the option is no desktop");
    desktop = VariablesOf(*given);
  }
  if (!HasRoomFor(caller.name)) return Bus::Error::LimitsExceeded("too many files are being opened already");
  const std::uint64_t id = openings_.Start({.path = path,
                                            .terminal = std::move(terminal),
                                            .desktop = std::move(desktop),
                                            .isWithdrawable = true,
                                            .finished = [this](const Opening& opening) { Tell(opening); }});
  Bus::Result<Bus::PeerWatch> watch = bus_.WatchPeer(caller.name, [this, id] { openings_.Withdraw(id); });
  if (!watch) {
    openings_.Withdraw(id);
    return watch.Failure();
  }
  clients_.emplace(id, Client{caller.name, std::move(*watch)});
  return id;
}

bool OpeningsBusObject::HasRoomFor(const std::string& caller) const {
  const auto ofCaller =
      std::ranges::count_if(clients_, [&](const auto& entry) { return entry.second.name == caller; });
  return clients_.size() < kMostOpenings && std::cmp_less(ofCaller, kMostOpeningsOfOneCaller);
}

void OpeningsBusObject::Tell(const Opening& opening) {
  const auto client = clients_.extract(opening.GetOrigin().id);
  if (!client) return;
  static_cast<void>(bus_.EmitTo(client.mapped().name.c_str(), Bus::ServiceNames::kOpeningsPath,
                                Bus::ServiceNames::kOpeningsInterface, Bus::ServiceNames::kFinishedSignal,
                                opening.GetOrigin().id,
                                std::string(Openings::NameOf(opening.GravestOutcome())), Described(opening)));
}

void OpeningsBusObject::AnnounceChanges(const std::vector<ListChange>& changes) {
  std::vector<Dictionary> dictionaries;
  dictionaries.reserve(changes.size());
  for (const ListChange& change : changes) dictionaries.push_back(Described(change));
  static_cast<void>(bus_.Emit(Bus::ServiceNames::kOpeningsPath, Bus::ServiceNames::kOpeningsInterface,
                              Bus::ServiceNames::kStoresChangedSignal, dictionaries));
}

}  // namespace Agent
