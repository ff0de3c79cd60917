#pragma once

#include "Bus/Sha256.h"
#include "Bus/StoreDictionaries.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/ThreadSafety/ThreadSafety.h"

#include <memory>
#include <optional>
#include <set>
#include <string>

// What the service-records service answers. Text is UTF-8, in dictionaries as the bus carries it; a result of
// nothing is no value. What only reads is called on the main thread and never waits; what changes the list
// waits for it, and is called on the thread of the changes, an opened file's on one of its own.
class MrvServiceRecordsSvr {
 public:
  using Stores = std::shared_ptr<const ServiceRecords::StoreSnapshot>;

  MrvServiceRecordsSvr();

  // These stores in id order as dictionaries without beacon keys; good until the next call.
  [[nodiscard]] const PropertyList::SharedDictionaries& allStores(const Stores& stores);
  [[nodiscard]] std::optional<PropertyList::Dictionary> storeForID(const std::string& id,
                                                                   const Stores& stores);

  // False for an empty argument, an unknown store or an unknown gateway; otherwise the change is saved.
  [[nodiscard]] bool setDefaultGatewayForStoreURLTo(const std::string& storeURL, const std::string& gateway);
  [[nodiscard]] bool setDefaultGatewayForStoreIDTo(const std::string& storeID, const std::string& gateway);

  // The path of the UI plug-in bundle.
  [[nodiscard]] std::string uiBundlePath();
  [[nodiscard]] bool deleteStore(const std::string& id);

  // Whether the list and its file agree: "good", "unsaved" or "unreadable".
  [[nodiscard]] std::string stateOfSavedStores();

  // The whole handling of one opened file; blocks in dialogs and network calls.
  void handleServiceRecordFTA(const std::string& path);
  // Applies the document; a document that changed something is announced once.
  void handleDiscoveryDocument(const std::string& xml);

 private:
  Agent::StoreDictionaries dictionaries_;  // the main thread's
  ThreadSafety::Mutex _arrayLock;
  // The documents already announced, each by its digest; never removed: deliberate.
  std::set<Agent::Sha256Digest> _previousDiscoveryDocumentsXML SR_GUARDED_BY(_arrayLock);
};

// A new object, owned by the caller.
extern "C" [[nodiscard]] MrvServiceRecordsSvr* NewMrvServiceRecordsServer();
