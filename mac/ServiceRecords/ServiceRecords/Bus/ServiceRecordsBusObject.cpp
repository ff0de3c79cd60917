#include "Bus/ServiceRecordsBusObject.h"

#include "MRVServiceRecordsSvr.h"
#include "Process/AtEnd.h"
#include "Process/ChangeQueue.h"
#include "Process/FileOpenings.h"
#include "Process/MainLoop.h"
#include "SRLib/SRProvider.h"
#include "libs/Bus/BusText.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Text/TextHelpers.h"

#include <memory>
#include <optional>
#include <utility>

namespace Agent {

using Bus::Deferred;
using PropertyList::Dictionary;
using PropertyList::SharedDictionaries;
using ServiceRecords::SRProvider;

namespace {

PendingChanges::Reply WhetherChanged(const Deferred<bool>& call) {
  return [call](bool changed) { call.Answer(changed); };
}

}  // namespace

Bus::Result<> ServiceRecordsBusObject::Serve(Bus::Connection& bus) {
  Bus::Interface interface(Bus::ServiceNames::kServiceRecordsInterface);
  AddStores(interface);
  AddDefaultGateways(interface);
  interface.Method("uiBundlePath", {}, {"path"}, [this](const Deferred<std::string>& call) {
    Answer(call,
           [this](const Stores& /*stores*/) { return Bus::Text(util::widen(service_.uiBundlePath())); });
  });
  interface.Method(
      "deleteStore", {"storeID"}, {"deleted"}, [this](const Deferred<bool>& call, const std::string& id) {
        Change(call.Caller(), WhetherChanged(call), [this, id] { return service_.deleteStore(id); });
      });
  AddDocuments(interface);
  interface.Property("stateOfSavedStores", [this] { return service_.stateOfSavedStores(); });
  return Bus::Keep(object_, bus.Serve(Bus::ServiceNames::kServiceRecordsPath, std::move(interface)));
}

void ServiceRecordsBusObject::AddStores(Bus::Interface& interface) {
  interface.Method("allStores", {}, {"stores"}, [this](const Deferred<SharedDictionaries>& call) {
    Answer(
        call, [this](const Stores& stores) -> const auto& { return service_.allStores(stores); });
  });
  interface.Method("storeForID", {"storeID"}, {"store"},
                   [this](const Deferred<std::optional<Dictionary>>& call, const std::string& id) {
                     Answer(call,
                            [this, id](const Stores& stores) { return service_.storeForID(id, stores); });
                   });
}

void ServiceRecordsBusObject::AddDefaultGateways(Bus::Interface& interface) {
  interface.Method("setDefaultGatewayForStoreURLTo", {"storeURL", "gatewayName"}, {"changed"},
                   [this](const Deferred<bool>& call, const std::string& url, const std::string& gateway) {
                     Change(call.Caller(), WhetherChanged(call), [this, url, gateway] {
                       return service_.setDefaultGatewayForStoreURLTo(url, gateway);
                     });
                   });
  interface.Method("setDefaultGatewayForStoreIDTo", {"storeID", "gatewayName"}, {"changed"},
                   [this](const Deferred<bool>& call, const std::string& id, const std::string& gateway) {
                     Change(call.Caller(), WhetherChanged(call), [this, id, gateway] {
                       return service_.setDefaultGatewayForStoreIDTo(id, gateway);
                     });
                   });
}

void ServiceRecordsBusObject::AddDocuments(Bus::Interface& interface) {
  interface.Method(
      "handleServiceRecordFTA", {"path"}, {}, [this](const Deferred<>& call, const std::string& path) {
        InTurn(call.Caller(),
               [this, call, path](const Stores& /*stores*/) { call.Try([&] { HandleFile(call, path); }); });
      });
  interface.Method("handleDiscoveryDocument", {"document"}, {},
                   [this](const Deferred<>& call, std::string document) {
                     const auto reply = [call](bool /*changed*/) { call.Answer(); };
                     Change(call.Caller(), reply, [this, document = std::move(document)] {
                       service_.handleDiscoveryDocument(document);
                       return true;
                     });
                   });
}

template <class Result, class Read>
void ServiceRecordsBusObject::Answer(const Deferred<Result>& call, Read read) {
  InTurn(call.Caller(), [call, read](const Stores& stores) {
    call.AnswerWith([&]() -> decltype(auto) { return read(stores); });
  });
}

void ServiceRecordsBusObject::InTurn(const std::string& caller, const PendingChanges::Answer& answer) {
  if (!pendingChanges_.KeepBehind(caller, answer)) answer(SRProvider::Instance().Snapshot());
}

void ServiceRecordsBusObject::Change(const std::string& caller, PendingChanges::Reply reply,
                                     std::function<bool()> change) {
  const std::uint64_t number = pendingChanges_.Begin(caller, std::move(reply));
  const auto end = std::make_shared<AtEnd>([this, number](bool changed) {
    const PendingChanges::Outcome outcome{changed, SRProvider::Instance().Snapshot()};
    MainLoop::Main().Post([this, number, outcome] { pendingChanges_.End(number, outcome); });
  });
  changes_.Add([change = std::move(change), end] { end->result = change(); });
}

void ServiceRecordsBusObject::HandleFile(const Deferred<>& call, const std::string& path) {
  openings_.Start(
      {.path = path, .finished = [call](const ServiceRecords::Opening& /*opening*/) { call.Answer(); }});
}

}  // namespace Agent
