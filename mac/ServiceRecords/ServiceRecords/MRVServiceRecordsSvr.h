#pragma once

#include "SRLib/PropertyList/PropertyList.h"
#include "Sha256.h"

#include <mutex>
#include <optional>
#include <set>
#include <string>

// What the service-records service answers. Text is UTF-8; a result of nothing is no value. Called on the
// main thread; handleServiceRecordFTA also on the threads that handle opened files.
class MrvServiceRecordsSvr {
 public:
  // The stores in id order as dictionaries without beacon keys; nothing when there are none.
  [[nodiscard]] std::optional<PropertyList::Array> allStores();
  [[nodiscard]] std::optional<PropertyList::Dictionary> storeForID(const std::string& id);

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
  std::mutex _arrayLock;
  // The documents already announced, each by its digest; never removed: deliberate.
  std::set<Sha256Digest> _previousDiscoveryDocumentsXML;
};

// A new object, owned by the caller.
extern "C" [[nodiscard]] MrvServiceRecordsSvr* NewMrvServiceRecordsServer();
