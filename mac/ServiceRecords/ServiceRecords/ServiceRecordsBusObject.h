#pragma once

#include "BusObject.h"

#include <cstdint>
#include <map>

class BackgroundTasks;
class MrvServiceRecordsSvr;

// Serves com.morvane.MrvServiceRecordsService on a connection. Main thread. A file is handled on a thread of
// its own; the caller's reply waits for it, the main loop does not.
class ServiceRecordsBusObject {
 public:
  // Both outlive this object and every task that it starts.
  ServiceRecordsBusObject(MrvServiceRecordsSvr& service, BackgroundTasks& tasks)
      : service_(service), tasks_(tasks) {}

  // False when the connection does not take the object.
  [[nodiscard]] bool Serve(sd_bus& bus);

 private:
  static int AllStores(sd_bus_message* call, void* self, sd_bus_error* error);
  static int StoreForID(sd_bus_message* call, void* self, sd_bus_error* error);
  static int SetDefaultGatewayForStoreURL(sd_bus_message* call, void* self, sd_bus_error* error);
  static int SetDefaultGatewayForStoreID(sd_bus_message* call, void* self, sd_bus_error* error);
  static int UIBundlePath(sd_bus_message* call, void* self, sd_bus_error* error);
  static int DeleteStore(sd_bus_message* call, void* self, sd_bus_error* error);
  static int HandleServiceRecordFTA(sd_bus_message* call, void* self, sd_bus_error* error);
  static int HandleDiscoveryDocument(sd_bus_message* call, void* self, sd_bus_error* error);
  static int StateOfSavedStores(sd_bus* bus, const char* path, const char* interface, const char* property,
                                sd_bus_message* reply, void* self, sd_bus_error* error);
  static const sd_bus_vtable kMethods[];
  static ServiceRecordsBusObject& Self(void* self) { return *static_cast<ServiceRecordsBusObject*>(self); }

  void HandleFileInBackground(sd_bus_message* call, const std::string& path);
  void Reply(std::uint64_t call);

  MrvServiceRecordsSvr& service_;
  BackgroundTasks& tasks_;
  BusSlotPtr slot_;
  // Calls whose file is still being handled. Their messages never leave the main thread; tasks know the
  // number.
  std::map<std::uint64_t, BusMessagePtr> pendingCalls_;
  std::uint64_t nextCall_ = 0;
};
