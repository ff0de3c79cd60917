#include "ServiceRecordsBusObject.h"

#include "BackgroundTasks.h"
#include "BusMarshalling.h"
#include "MRVServiceRecordsSvr.h"
#include "MainLoop.h"
#include "ServiceNames.h"

#include <functional>
#include <memory>
#include <utility>

namespace {

// Posts the reply to the main loop however the handling ends, and when it does not begin.
class ReplyAtEnd {
 public:
  explicit ReplyAtEnd(std::function<void()> reply) : reply_(std::move(reply)) {}
  ~ReplyAtEnd() { MainLoop::Main().Post(reply_); }
  ReplyAtEnd(const ReplyAtEnd&) = delete;
  ReplyAtEnd& operator=(const ReplyAtEnd&) = delete;

 private:
  const std::function<void()> reply_;
};

}  // namespace

const sd_bus_vtable ServiceRecordsBusObject::kMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("allStores", SD_BUS_NO_ARGS, SD_BUS_RESULT("aa{sv}", stores), AllStores,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("storeForID", SD_BUS_ARGS("s", storeID), SD_BUS_RESULT("a{sv}", store),
                            StoreForID, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("setDefaultGatewayForStoreURLTo", SD_BUS_ARGS("s", storeURL, "s", gatewayName),
                            SD_BUS_RESULT("b", changed), SetDefaultGatewayForStoreURL,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("setDefaultGatewayForStoreIDTo", SD_BUS_ARGS("s", storeID, "s", gatewayName),
                            SD_BUS_RESULT("b", changed), SetDefaultGatewayForStoreID,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("uiBundlePath", SD_BUS_NO_ARGS, SD_BUS_RESULT("s", path), UIBundlePath,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("deleteStore", SD_BUS_ARGS("s", storeID), SD_BUS_RESULT("b", deleted),
                            DeleteStore, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("handleServiceRecordFTA", SD_BUS_ARGS("s", path), SD_BUS_NO_RESULT,
                            HandleServiceRecordFTA, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("handleDiscoveryDocument", SD_BUS_ARGS("s", document), SD_BUS_NO_RESULT,
                            HandleDiscoveryDocument, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("stateOfSavedStores", "s", StateOfSavedStores, 0, 0),
    SD_BUS_VTABLE_END};

bool ServiceRecordsBusObject::Serve(sd_bus& bus) {
  slot_ = AddInterface(bus, ServiceNames::kServiceRecordsPath, ServiceNames::kServiceRecordsInterface,
                       kMethods, this);
  return slot_ != nullptr;
}

int ServiceRecordsBusObject::AllStores(sd_bus_message* call, void* self, sd_bus_error* error) {
  return AnswerCall(error, [&] {
    const auto stores = Self(self).service_.allStores();
    return ReplyWith(call, [&stores](sd_bus_message* reply) {
      return AppendDictionaries(reply, stores.value_or(PropertyList::Array{}));
    });
  });
}

int ServiceRecordsBusObject::StoreForID(sd_bus_message* call, void* self, sd_bus_error* error) {
  return AnswerCall(error, [&] {
    const auto store = Self(self).service_.storeForID(ReadText(call));
    return ReplyWith(call, [&store](sd_bus_message* reply) {
      return AppendDictionary(reply, store.value_or(PropertyList::Dictionary{}));
    });
  });
}

int ServiceRecordsBusObject::SetDefaultGatewayForStoreURL(sd_bus_message* call, void* self,
                                                          sd_bus_error* error) {
  return AnswerCall(error, [&] {
    const std::string storeURL = ReadText(call);
    const bool changed = Self(self).service_.setDefaultGatewayForStoreURLTo(storeURL, ReadText(call));
    return sd_bus_reply_method_return(call, "b", static_cast<int>(changed));
  });
}

int ServiceRecordsBusObject::SetDefaultGatewayForStoreID(sd_bus_message* call, void* self,
                                                         sd_bus_error* error) {
  return AnswerCall(error, [&] {
    const std::string storeID = ReadText(call);
    const bool changed = Self(self).service_.setDefaultGatewayForStoreIDTo(storeID, ReadText(call));
    return sd_bus_reply_method_return(call, "b", static_cast<int>(changed));
  });
}

int ServiceRecordsBusObject::UIBundlePath(sd_bus_message* call, void* self, sd_bus_error* error) {
  return AnswerCall(error, [&] {
    return sd_bus_reply_method_return(call, "s", BusText(Self(self).service_.uiBundlePath()).c_str());
  });
}

int ServiceRecordsBusObject::StateOfSavedStores(sd_bus* /*bus*/, const char* /*path*/,
                                                const char* /*interface*/, const char* /*property*/,
                                                sd_bus_message* reply, void* self, sd_bus_error* error) {
  return AnswerCall(error, [&] {
    return sd_bus_message_append(reply, "s", Self(self).service_.stateOfSavedStores().c_str());
  });
}

int ServiceRecordsBusObject::DeleteStore(sd_bus_message* call, void* self, sd_bus_error* error) {
  return AnswerCall(error, [&] {
    const bool removed = Self(self).service_.deleteStore(ReadText(call));
    return sd_bus_reply_method_return(call, "b", static_cast<int>(removed));
  });
}

int ServiceRecordsBusObject::HandleServiceRecordFTA(sd_bus_message* call, void* self, sd_bus_error* error) {
  return AnswerCall(error, [&] {
    Self(self).HandleFileInBackground(call, ReadText(call));
    return 1;  // the reply follows when the file has been handled
  });
}

void ServiceRecordsBusObject::HandleFileInBackground(sd_bus_message* call, const std::string& path) {
  const std::uint64_t number = nextCall_++;
  pendingCalls_.emplace(number, BusMessagePtr(sd_bus_message_ref(call)));
  const auto reply = std::make_shared<ReplyAtEnd>([this, number] { Reply(number); });
  tasks_.Start([this, path, reply] { service_.handleServiceRecordFTA(path); });
}

void ServiceRecordsBusObject::Reply(std::uint64_t call) {
  const auto pending = pendingCalls_.extract(call);
  if (pending) sd_bus_reply_method_return(pending.mapped().get(), nullptr);
}

int ServiceRecordsBusObject::HandleDiscoveryDocument(sd_bus_message* call, void* self, sd_bus_error* error) {
  return AnswerCall(error, [&] {
    Self(self).service_.handleDiscoveryDocument(ReadText(call));
    return sd_bus_reply_method_return(call, nullptr);
  });
}
