#pragma once

#include "Bus/BusObject.h"
#include "Bus/PendingChanges.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

class BackgroundTasks;
class ChangeQueue;
class MrvServiceRecordsSvr;

// Serves com.morvane.MrvServiceRecordsService on a connection. Main thread, which waits for nothing: what
// only reads is answered from the list that was saved last, what changes the list is done by the queue and
// answered afterwards, and a file is handled on a thread of its own.
class ServiceRecordsBusObject {
 public:
  // All three outlive this object and what it gives them to do.
  ServiceRecordsBusObject(MrvServiceRecordsSvr& service, BackgroundTasks& tasks, ChangeQueue& changes)
      : service_(service), tasks_(tasks), changes_(changes) {}

  // False when the connection does not take the object.
  [[nodiscard]] bool Serve(sd_bus& bus);

 private:
  using Stores = PendingChanges::Stores;
  using Method = int (ServiceRecordsBusObject::*)(sd_bus_message* call);
  using MethodInTurn = int (ServiceRecordsBusObject::*)(sd_bus_message* call, const Stores& stores);

  static const sd_bus_vtable kMethods[];
  static ServiceRecordsBusObject& Self(void* self) { return *static_cast<ServiceRecordsBusObject*>(self); }
  // Handles a call as it arrives.
  template <Method kMethod>
  static int AtOnce(sd_bus_message* call, void* self, sd_bus_error* error) {
    return AnswerCall(error, [&] { return (Self(self).*kMethod)(call); });
  }
  // Handles a call when its sender has nothing else to wait for.
  template <MethodInTurn kMethod>
  static int InTurn(sd_bus_message* call, void* self, sd_bus_error* error) {
    return AnswerCall(error, [&] { return Self(self).AnswerInTurn(call, kMethod); });
  }
  int AnswerInTurn(sd_bus_message* call, MethodInTurn method);

  int AllStores(sd_bus_message* call, const Stores& stores);
  int StoreForID(sd_bus_message* call, const Stores& stores);
  int UIBundlePath(sd_bus_message* call, const Stores& stores);
  int HandleServiceRecordFTA(sd_bus_message* call, const Stores& stores);
  int SetDefaultGatewayForStoreURL(sd_bus_message* call);
  int SetDefaultGatewayForStoreID(sd_bus_message* call);
  int DeleteStore(sd_bus_message* call);
  int HandleDiscoveryDocument(sd_bus_message* call);
  static int StateOfSavedStores(sd_bus* bus, const char* path, const char* interface, const char* property,
                                sd_bus_message* reply, void* self, sd_bus_error* error);

  // The reply follows when the change has been made.
  int Change(sd_bus_message* call, const char* resultTypes, std::function<bool()> change);
  void ReplyAboutFile(std::uint64_t call);

  MrvServiceRecordsSvr& service_;
  BackgroundTasks& tasks_;
  ChangeQueue& changes_;
  PendingChanges pendingChanges_;
  BusSlotPtr slot_;
  // Calls whose file is still being handled. Their messages never leave the main thread; tasks know the
  // number.
  std::map<std::uint64_t, BusMessagePtr> pendingFiles_;
  std::uint64_t nextFile_ = 0;
};
