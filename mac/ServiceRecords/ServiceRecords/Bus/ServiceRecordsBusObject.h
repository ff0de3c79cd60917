#pragma once

#include "Bus/PendingChanges.h"
#include "libs/Bus/Connection.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace Agent {
class ChangeQueue;
class FileOpenings;
}  // namespace Agent
class MrvServiceRecordsSvr;

namespace Agent {

// Serves com.morvane.MrvServiceRecordsService on a connection. Main thread, which waits for nothing: what
// only reads is answered from the list that was saved last, what changes the list is done by the queue and
// answered afterwards, and a file is handled on a thread of its own.
class ServiceRecordsBusObject {
 public:
  // All three outlive this object and what it gives them to do.
  ServiceRecordsBusObject(MrvServiceRecordsSvr& service, FileOpenings& openings, ChangeQueue& changes)
      : service_(service), openings_(openings), changes_(changes) {}

  [[nodiscard]] Bus::Result<> Serve(Bus::Connection& bus);

 private:
  using Stores = PendingChanges::Stores;

  // In the order of the description that is shipped.
  void AddStores(Bus::Interface& interface);
  void AddDefaultGateways(Bus::Interface& interface);
  void AddDocuments(Bus::Interface& interface);

  // Answers with what `read` gives when the caller has nothing else to wait for.
  template <class Result, class Read>
  void Answer(const Bus::Deferred<Result>& call, Read read);
  void InTurn(const std::string& caller, const PendingChanges::Answer& answer);
  // The reply follows when the change has been made.
  void Change(const std::string& caller, PendingChanges::Reply reply, std::function<bool()> change);
  void HandleFile(const Bus::Deferred<>& call, const std::string& path);

  MrvServiceRecordsSvr& service_;
  FileOpenings& openings_;
  ChangeQueue& changes_;
  PendingChanges pendingChanges_;
  Bus::Slot object_;
};

}  // namespace Agent
