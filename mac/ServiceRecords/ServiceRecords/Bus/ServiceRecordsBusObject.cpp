#include "Bus/ServiceRecordsBusObject.h"

#include "Bus/BusMarshalling.h"
#include "MRVServiceRecordsSvr.h"
#include "Process/BackgroundTasks.h"
#include "Process/ChangeQueue.h"
#include "Process/MainLoop.h"
#include "SRLib/SRProvider.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Text/TextHelpers.h"

#include <memory>
#include <utility>

using ServiceRecords::SRProvider;

namespace {

// Reports the result of a piece of work however it ends, and when it does not begin.
class AtEnd {
 public:
  explicit AtEnd(std::function<void(bool)> report) : report_(std::move(report)) {}
  ~AtEnd() { report_(result); }
  AtEnd(const AtEnd&) = delete;
  AtEnd& operator=(const AtEnd&) = delete;

  bool result = false;

 private:
  const std::function<void(bool result)> report_;
};

}  // namespace

const sd_bus_vtable ServiceRecordsBusObject::kMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("allStores", SD_BUS_NO_ARGS, SD_BUS_RESULT("aa{sv}", stores),
                            InTurn<&ServiceRecordsBusObject::AllStores>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("storeForID", SD_BUS_ARGS("s", storeID), SD_BUS_RESULT("a{sv}", store),
                            InTurn<&ServiceRecordsBusObject::StoreForID>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("setDefaultGatewayForStoreURLTo", SD_BUS_ARGS("s", storeURL, "s", gatewayName),
                            SD_BUS_RESULT("b", changed),
                            AtOnce<&ServiceRecordsBusObject::SetDefaultGatewayForStoreURL>,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("setDefaultGatewayForStoreIDTo", SD_BUS_ARGS("s", storeID, "s", gatewayName),
                            SD_BUS_RESULT("b", changed),
                            AtOnce<&ServiceRecordsBusObject::SetDefaultGatewayForStoreID>,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("uiBundlePath", SD_BUS_NO_ARGS, SD_BUS_RESULT("s", path),
                            InTurn<&ServiceRecordsBusObject::UIBundlePath>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("deleteStore", SD_BUS_ARGS("s", storeID), SD_BUS_RESULT("b", deleted),
                            AtOnce<&ServiceRecordsBusObject::DeleteStore>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("handleServiceRecordFTA", SD_BUS_ARGS("s", path), SD_BUS_NO_RESULT,
                            InTurn<&ServiceRecordsBusObject::HandleServiceRecordFTA>,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("handleDiscoveryDocument", SD_BUS_ARGS("s", document), SD_BUS_NO_RESULT,
                            AtOnce<&ServiceRecordsBusObject::HandleDiscoveryDocument>,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("stateOfSavedStores", "s", StateOfSavedStores, 0, 0),
    SD_BUS_VTABLE_END};

bool ServiceRecordsBusObject::Serve(sd_bus& bus) {
  slot_ = AddInterface(bus, ServiceNames::kServiceRecordsPath, ServiceNames::kServiceRecordsInterface,
                       kMethods, this);
  return slot_ != nullptr;
}

int ServiceRecordsBusObject::AnswerInTurn(sd_bus_message* call, MethodInTurn method) {
  const auto answer = [this, method](sd_bus_message* turn, const Stores& stores) {
    return (this->*method)(turn, stores);
  };
  if (pendingChanges_.KeepBehind(call, answer)) return 1;
  return answer(call, SRProvider::Instance().Snapshot());
}

int ServiceRecordsBusObject::AllStores(sd_bus_message* call, const Stores& stores) {
  const PropertyList::SharedDictionaries& dictionaries = service_.allStores(stores);
  return ReplyWith(call, [&](sd_bus_message* reply) { return AppendDictionaries(reply, dictionaries); });
}

int ServiceRecordsBusObject::StoreForID(sd_bus_message* call, const Stores& stores) {
  return ReplyWithDictionary(call, service_.storeForID(ReadText(call), stores));
}

int ServiceRecordsBusObject::UIBundlePath(sd_bus_message* call, const Stores& /*stores*/) {
  return sd_bus_reply_method_return(call, "s", BusText(util::widen(service_.uiBundlePath())).c_str());
}

int ServiceRecordsBusObject::StateOfSavedStores(sd_bus* /*bus*/, const char* /*path*/,
                                                const char* /*interface*/, const char* /*property*/,
                                                sd_bus_message* reply, void* self, sd_bus_error* error) {
  return AnswerCall(error, [&] {
    return sd_bus_message_append(reply, "s", Self(self).service_.stateOfSavedStores().c_str());
  });
}

int ServiceRecordsBusObject::SetDefaultGatewayForStoreURL(sd_bus_message* call) {
  std::string storeURL = ReadText(call);
  return Change(call, "b", [this, storeURL = std::move(storeURL), gateway = ReadText(call)] {
    return service_.setDefaultGatewayForStoreURLTo(storeURL, gateway);
  });
}

int ServiceRecordsBusObject::SetDefaultGatewayForStoreID(sd_bus_message* call) {
  std::string storeID = ReadText(call);
  return Change(call, "b", [this, storeID = std::move(storeID), gateway = ReadText(call)] {
    return service_.setDefaultGatewayForStoreIDTo(storeID, gateway);
  });
}

int ServiceRecordsBusObject::DeleteStore(sd_bus_message* call) {
  return Change(call, "b", [this, id = ReadText(call)] { return service_.deleteStore(id); });
}

int ServiceRecordsBusObject::HandleDiscoveryDocument(sd_bus_message* call) {
  return Change(call, "", [this, document = ReadText(call)] {
    service_.handleDiscoveryDocument(document);
    return true;
  });
}

int ServiceRecordsBusObject::Change(sd_bus_message* call, const char* resultTypes,
                                    std::function<bool()> change) {
  const std::uint64_t number = pendingChanges_.Begin(call, resultTypes);
  const auto end = std::make_shared<AtEnd>([this, number](bool changed) {
    const PendingChanges::Outcome outcome{changed, SRProvider::Instance().Snapshot()};
    MainLoop::Main().Post([this, number, outcome] { pendingChanges_.End(number, outcome); });
  });
  changes_.Add([change = std::move(change), end] { end->result = change(); });
  return 1;
}

int ServiceRecordsBusObject::HandleServiceRecordFTA(sd_bus_message* call, const Stores& /*stores*/) {
  const std::uint64_t number = nextFile_++;
  pendingFiles_.emplace(number, BusMessagePtr(sd_bus_message_ref(call)));
  const auto reply = std::make_shared<AtEnd>(
      [this, number](bool) { MainLoop::Main().Post([this, number] { ReplyAboutFile(number); }); });
  tasks_.Start([this, path = ReadText(call), reply] { service_.handleServiceRecordFTA(path); });
  return 1;  // the reply follows when the file has been handled
}

void ServiceRecordsBusObject::ReplyAboutFile(std::uint64_t call) {
  const auto pending = pendingFiles_.extract(call);
  if (pending) sd_bus_reply_method_return(pending.mapped().get(), nullptr);
}
