#include "MRVServiceRecordsSvr.h"

#include "DbgTrace.h"
#include "SRLib/SRProvider.h"
#include "ServiceRecordMain.h"
#include "libs/Bus/BusText.h"
#include "libs/Files/Bundle.h"
#include "libs/SRUIProtocol/PlugInDescription.h"
#include "libs/Text/TextHelpers.h"

using ServiceRecords::SavedStores;
using ServiceRecords::SRProvider;

namespace {

constexpr char kAllStores[] = "MrvServiceRecordsSvr::allStores";

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

MrvServiceRecordsSvr::MrvServiceRecordsSvr() : dictionaries_(Agent::BeaconKeys::Omitted, Bus::Text) {}

MrvServiceRecordsSvr* NewMrvServiceRecordsServer() {
  return new MrvServiceRecordsSvr;
}

const PropertyList::SharedDictionaries& MrvServiceRecordsSvr::allStores(const Stores& stores) {
  CSRLog(0, "[+] %s", kAllStores);
  const PropertyList::SharedDictionaries& dictionaries = dictionaries_.Of(stores);
  CSRLog(0, "[-] %s", kAllStores);
  return dictionaries;
}

std::optional<PropertyList::Dictionary> MrvServiceRecordsSvr::storeForID(const std::string& id,
                                                                         const Stores& stores) {
  constexpr char kMethod[] = "MrvServiceRecordsSvr::storeForID";
  CSRLog(0, "[+] %s (%@)", kMethod, id);
  // The index stands in for a search of what allStores answers, whose records stay.
  CSRLog(0, "[+] %s", kAllStores);
  CSRLog(0, "[-] %s", kAllStores);
  std::optional<PropertyList::Dictionary> result;
  const ServiceRecords::SRStore* store = stores->ByID(util::widen(id));
  if (store != nullptr) result = Agent::StoreDictionary(*store, Agent::BeaconKeys::Omitted, Bus::Text);
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
  std::string path =
      Files::Bundle::Main().BuiltInPlugInsPath().string() + "/" + SRUI::PlugInDescription::kFolderName;
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
    const ThreadSafety::MutexLock lock(_arrayLock);
    if (_previousDiscoveryDocumentsXML.insert(Agent::Sha256(xml)).second) Agent::AnnounceStores();
  }
  CSRLog(0, "[-] %s", kMethod);
}
