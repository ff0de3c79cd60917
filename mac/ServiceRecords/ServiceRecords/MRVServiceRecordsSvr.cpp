#include "MRVServiceRecordsSvr.h"

#include "Bundle.h"
#include "DbgTrace.h"
#include "SRLib/SRProvider.h"
#include "SRLib/TextHelpers.h"
#include "ServiceRecordMain.h"
#include "StoreDictionary.h"

using ServiceRecords::SavedStores;
using ServiceRecords::SRProvider;

namespace {

using Setter = bool (SRProvider::*)(const std::wstring& store, const std::wstring& gateway);

bool SetDefaultGateway(const char* method, Setter setter, const std::string& store,
                       const std::string& gateway) {
  CSRLog(0, "[+] %s (%@, %@)", method, store, gateway);
  SRProvider& provider = SRProvider::Instance();
  const bool changed =
      !store.empty() && !gateway.empty() && (provider.*setter)(util::widen(store), util::widen(gateway));
  if (changed) provider.SaveAllStores();
  CSRLog(0, "[-] %s (%d)", method, changed);
  return changed;
}

std::string NameOf(SavedStores::State state) {
  switch (state) {
    case SavedStores::State::Good:
      return "good";
    case SavedStores::State::Unsaved:
      return "unsaved";
    case SavedStores::State::Unreadable:
      break;
  }
  return "unreadable";
}

}  // namespace

MrvServiceRecordsSvr* NewMrvServiceRecordsServer() {
  return new MrvServiceRecordsSvr;
}

std::optional<PropertyList::Array> MrvServiceRecordsSvr::allStores() {
  constexpr char kMethod[] = "MrvServiceRecordsSvr::allStores";
  CSRLog(0, "[+] %s", kMethod);
  const ServiceRecords::StoreMap stores = SRProvider::Instance().GetStores();
  std::optional<PropertyList::Array> result;
  if (!stores.empty()) {
    result.emplace();
    for (const auto& [id, store] : stores) result->emplace_back(StoreDictionary(store, BeaconKeys::Omitted));
  }
  CSRLog(0, "[-] %s", kMethod);
  return result;
}

std::optional<PropertyList::Dictionary> MrvServiceRecordsSvr::storeForID(const std::string& id) {
  constexpr char kMethod[] = "MrvServiceRecordsSvr::storeForID";
  CSRLog(0, "[+] %s (%@)", kMethod, id);
  std::optional<PropertyList::Dictionary> result;
  for (const PropertyList::Value& store : allStores().value_or(PropertyList::Array{})) {
    const auto& dictionary = *store.As<PropertyList::Dictionary>();
    if (*dictionary.Find("StoreID") != PropertyList::Value(id)) continue;
    result = dictionary;
    break;
  }
  CSRLog(0, "[-] %s", kMethod);
  return result;
}

bool MrvServiceRecordsSvr::setDefaultGatewayForStoreURLTo(const std::string& storeURL,
                                                          const std::string& gateway) {
  return SetDefaultGateway("MrvServiceRecordsSvr::setDefaultGatewayForStoreURLTo",
                           &SRProvider::SetDefaultGatewayForStore, storeURL, gateway);
}

bool MrvServiceRecordsSvr::setDefaultGatewayForStoreIDTo(const std::string& storeID,
                                                         const std::string& gateway) {
  return SetDefaultGateway("MrvServiceRecordsSvr::setDefaultGatewayForStoreIDTo",
                           &SRProvider::SetDefaultGatewayForStoreID, storeID, gateway);
}

std::string MrvServiceRecordsSvr::uiBundlePath() {
  constexpr char kMethod[] = "MrvServiceRecordsSvr::uiBundlePath";
  CSRLog(0, "[+] %s", kMethod);
  std::string path = Bundle::Main().BuiltInPlugInsPath().string() + "/ServiceRecordUI.bundle";
  CSRLog(0, "[-] %s (%@)", kMethod, path);
  return path;
}

bool MrvServiceRecordsSvr::deleteStore(const std::string& id) {
  constexpr char kMethod[] = "MrvServiceRecordsSvr::deleteStore";
  CSRLog(0, "[+] %s (%@)", kMethod, id);
  const bool removed = SRProvider::Instance().RemoveStore(util::widen(id));
  CSRLog(0, "[-] %s (%d)", kMethod, removed);
  return removed;
}

std::string MrvServiceRecordsSvr::stateOfSavedStores() {
  constexpr char kMethod[] = "MrvServiceRecordsSvr::stateOfSavedStores";
  CSRLog(0, "[+] %s", kMethod);
  std::string state = NameOf(SRProvider::Instance().StateOfSavedStores());
  CSRLog(0, "[-] %s (%@)", kMethod, state);
  return state;
}

void MrvServiceRecordsSvr::handleServiceRecordFTA(const std::string& path) {
  constexpr char kMethod[] = "MrvServiceRecordsSvr::handleServiceRecordFTA";
  CSRLog(0, "[+] %s (%@)", kMethod, path);
  ServiceRecordHandleFTA(("\"" + path + "\"").c_str());
  CSRLog(0, "[-] %s", kMethod);
}

void MrvServiceRecordsSvr::handleDiscoveryDocument(const std::string& xml) {
  constexpr char kMethod[] = "MrvServiceRecordsSvr::handleDiscoveryDocument";
  CSRLog(0, "[+] %s", kMethod);
  bool updated = false;
  SRProvider::Instance().InboundUpdate(util::widen(xml), updated);
  if (updated) {
    const std::lock_guard lock(_arrayLock);
    if (_previousDiscoveryDocumentsXML.insert(Sha256(xml)).second) AnnounceStores();
  }
  CSRLog(0, "[-] %s", kMethod);
}
