#include "SRLib/SRProvider.h"

#include "SRLib/GenericFactories.h"
#include "SRLib/IServiceRecordsNotifications.h"
#include "SRLib/Messages.h"
#include "SRLib/Publication.h"
#include "SRLib/SRRegistryConfig.h"
#include "SRLib/SRXMLProvider.h"
#include "SRLib/SSLValidation.h"
#include "SRLib/SSLValidationDetails.h"
#include "SRLib/SSLValidationFactory.h"
#include "SRLib/TextHelpers.h"
#include "SRLib/Trace.h"

#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>

namespace ServiceRecords {

SRProvider& SRProvider::Instance() {
  static SRProvider provider;
  return provider;
}

SRProvider::SRProvider()
    : lock_(CGenericFactories::Instance().CriticalSections().ManufactureCriticalSection()) {
  RestoreFromRepository();
}

SRProvider::~SRProvider() = default;

void SRProvider::RestoreFromRepository() {
  const CriticalSectionLock lock(*lock_);
  stores_ = SRRegistryConfig().RestoreStores();
  SetAllServiceRecordsToList(stores_);
}

IServiceRecordsNotifications* SRProvider::Notification() const {
  if (notifications_ != nullptr) return notifications_;
  SR_TRACE(2) << "Notification manager for Service Records is not initialized.";
  SR_TRACE(2) << "Service Records logic will not work correctly.";
  return nullptr;
}

void SRProvider::InboundUpdate(const std::wstring& document, bool& updated) {
  SR_TRACE(0) << "-> Inbound SR update started. Document contents: " << document;
  updated = false;
  StoreMap parsed = SRXMLProvider().Parse(document);
  if (!parsed.empty()) {
    SR_TRACE(0) << "...SR document parsed successfully.";
    const CriticalSectionLock lock(*lock_);
    MergeStores(parsed, true, updated);
    if (updated) SaveAndPublish();
  } else {
    SR_TRACE(2) << "...Failed to parse SR document.";
    Notification()->ShowSRErrorDialog(util::MessageFromResourceW(util::kMessageDiscoveryTitle),
                                      util::MessageFromResourceW(util::kMessageNotAServiceRecord));
  }
  SR_TRACE(0) << "<- Inbound SR update finished";
}

void SRProvider::MergeStores(StoreMap& incoming, bool dsTrusted, bool& updated) {
  updated = false;
  if (incoming.empty()) return;
  StoreMap merged = stores_;  // so that a failure on the way leaves the list as it was
  for (auto& [id, store] : incoming) {
    const auto held = merged.find(id);
    if (held == merged.end()) {
      if (dsTrusted) {
        store.SetAllGatewaysDSTrusted();
        store.SetAllBeaconsDSConfirmed();
      }
      merged.emplace(id, store);
      updated = true;
    } else if (dsTrusted || Notification()->ShowStoreReplaceDialog(held->second.GetStoreName()) ==
                                IServiceRecordsNotifications::kAccepted) {
      held->second.Merge(store, dsTrusted);
      updated = true;
    }
  }
  stores_ = std::move(merged);
}

bool SRProvider::RemoveStore(const std::wstring& id) {
  SR_TRACE(0) << "-> RemoveStore started. Service Record ID is: " << id;
  bool removed = false;
  if (id.empty()) {
    SR_TRACE(2) << "Service Record Id is empty";
  } else {
    const CriticalSectionLock lock(*lock_);
    removed = stores_.erase(id) != 0;
    if (removed) {
      SaveAndPublish();
      SR_TRACE(2) << "Removed store " << id;  // a success at the failure level: deliberate
    } else {
      SR_TRACE(2) << "No store removed";
    }
  }
  SR_TRACE(0) << "<- RemoveStore finished";
  return removed;
}

StoreMap SRProvider::GetStores() const {
  const CriticalSectionLock lock(*lock_);
  return stores_;
}

void SRProvider::WhileLocked(const std::function<void()>& work) const {
  const CriticalSectionLock lock(*lock_);
  work();
}

void SRProvider::SaveAllStores() {
  // Under the lock, or a merge on another thread would be torn.
  const CriticalSectionLock lock(*lock_);
  SaveAndPublish();
}

void SRProvider::SaveAndPublish() {
  SRRegistryConfig().SaveStores(stores_);
  SetAllServiceRecordsToList(stores_);
}

void SRProvider::OutboundUserConfirm(const std::wstring& filePath, StoreMap& accepted) {
  SR_TRACE(0) << "-> Outbound SR User confirmation started" << filePath;
  accepted.clear();
  std::wstring text;
  if (filePath.size() < 3 || !util::ReadUTF8File(filePath.substr(1, filePath.size() - 2), text)) {
    SR_TRACE(2) << "...Failed to read SR file.";
    return;
  }
  StoreMap stores = SRXMLProvider().Parse(text);
  if (stores.empty()) {
    const std::wstring message = util::MessageFromResourceW(util::kMessageNotAServiceRecord);
    SR_TRACE(2) << "..." << message;
    Notification()->ShowSRErrorDialog(util::MessageFromResourceW(util::kMessageStoreTitle), message);
  } else {
    SR_TRACE(0) << "...SR document parsed successfully.";
    for (auto entry = stores.begin(); entry != stores.end();) {
      if (VerifyUserTrust(entry->second)) {
        ++entry;
      } else {
        SR_TRACE(0) << "......Failed trust for store: " << entry->first;
        entry = stores.erase(entry);
      }
    }
    MergeAccepted(stores, accepted);
  }
  SR_TRACE(0) << "<- Outbound SR User confirmation finished. File: " << filePath;
}

void SRProvider::MergeAccepted(StoreMap& stores, StoreMap& accepted) {
  const CriticalSectionLock lock(*lock_);
  bool updated = false;
  MergeStores(stores, false, updated);
  if (!updated) return;
  accepted = stores;  // also those whose replacement the user declined
  SaveAndPublish();
}

bool SRProvider::VerifyUserTrust(SRStore& store) {
  SRGateway gateway;
  const bool hasGateway = store.GetDefaultGatewayRef(gateway);
  SSLValidationDetails details;
  if (hasGateway && VerifyServer(store, gateway.GetLocation(), gateway.GetLocation(), details)) return true;
  // The store's own address stands in only for a gateway that could not be reached.
  if (!hasGateway || details.Result == SSLValidationDetails::kServerNotContacted) {
    details.Reset();
    if (VerifyServer(store, store.GetStoreURL(), gateway.GetLocation(), details)) return true;
  }
  if (details.Result == SSLValidationDetails::kUserDoesNotTrustServer) return false;
  std::wstring message;
  for (const std::wstring& error : details.Errors) message += error + L" ";
  Notification()->ShowSRErrorDialog(util::MessageFromResourceW(util::kMessageStoreTitle), message);
  return false;
}

bool SRProvider::VerifyServer(SRStore& store, const std::wstring& url, const std::wstring& /*secondUrl*/,
                              SSLValidationDetails& details) {
  const std::unique_ptr<SSLValidation> validation = SSLValidationFactory::c_Instance->Create(url);
  SR_TRACE(0) << ".......Validation for server: " << url;
  if (!validation->ValidateURL(details)) {
    SR_TRACE(0) << "........-> SSL validation failure";
    return false;
  }
  SRGateway gateway;
  store.GetDefaultGatewayRef(gateway);
  const auto otherGateways = PrepareOtherGateways(store);
  const std::int32_t answer = Notification()->ShowTrustDialog(
      details.Issuer, details.Organization, store.GetStoreName(), store.GetStoreURL(),
      {gateway.GetName(), gateway.GetLocation()}, otherGateways);
  if (answer != IServiceRecordsNotifications::kAccepted) {
    details.Result = SSLValidationDetails::kUserDoesNotTrustServer;
    SR_TRACE(0) << "........-> user doesn't trust the server";
    return false;
  }
  SR_TRACE(0) << "........-> success";
  return true;
}

void SRProvider::OutboundDSConfirm(StoreMap& stores, bool& updated) {
  SR_TRACE(0) << "-> Outbound SR DS confirmation started";
  updated = false;
  std::wstring document;
  std::vector<std::wstring> documents;
  bool canceled = false;  // for all stores together: deliberately not cleared before each of them
  for (auto& [id, store] : stores) {
    if (VerifyDSTrust(store, document, canceled)) {
      SR_TRACE(0) << "...DS trust verification succeded for store: " << store.GetStoreID();
      SR_TRACE(0) << "...Received DiscoveryDocument: " << document;
      documents.push_back(std::move(document));
      document.clear();
    } else if (canceled) {
      SR_TRACE(0) << "...DS trust verification was canceled by user for store: " << store.GetStoreID();
    } else {
      SR_TRACE(0) << "...DS trust verification failed for store: " << store.GetStoreID();
    }
  }
  if (!documents.empty()) {
    const CriticalSectionLock lock(*lock_);
    MergeDiscoveryDocs(stores, documents, updated);
    if (updated) SaveAndPublish();
  }
  SR_TRACE(0) << "<- Outbound DS confirmation finished";
}

bool SRProvider::VerifyDSTrust(SRStore& store, std::wstring& discoveryDocument, bool& canceled) {
  std::wstring response;
  if (!MakeConnection(store, response, canceled)) {
    if (!canceled) {
      Notification()->ShowSRErrorDialog(util::MessageFromResourceW(util::kMessageStoreTitle),
                                        util::MessageFromResourceW(util::kMessageDiscoveryConnectionFailed));
    }
    return false;
  }
  if (SRXMLProvider::IsDiscovery(response)) {
    discoveryDocument = std::move(response);
    return true;
  }
  Notification()->ShowSRErrorDialog(util::MessageFromResourceW(util::kMessageStoreTitle),
                                    util::MessageFromResourceW(util::kMessageNotADiscoveryDocument));
  return false;
}

void SRProvider::MergeDiscoveryDocs(const StoreMap& /*stores*/, const std::vector<std::wstring>& documents,
                                    bool& updated) {
  updated = false;
  if (documents.empty()) return;
  SRXMLProvider provider;
  for (const std::wstring& document : documents) {
    StoreMap confirmed = provider.Parse(document);
    if (confirmed.empty()) continue;
    bool changed = false;
    MergeStores(confirmed, true, changed);
    if (changed) updated = true;
  }
}

namespace {

constexpr wchar_t kDiscoverySuffix[] = L"/discovery";
constexpr wchar_t kSchemeSeparator[] = L"://";
constexpr wchar_t kPathSeparator = L'/';

// Whatever the locale of the process; where there is no UTF-8 locale, ASCII only.
wchar_t LowerCased(wchar_t character) {
  static const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  const wint_t wide = std::char_traits<wchar_t>::to_int_type(character);
  return static_cast<wchar_t>(unicode != nullptr ? ::towlower_l(wide, unicode) : ::towlower(wide));
}

std::wstring LowerCase(std::wstring text) {
  std::transform(text.begin(), text.end(), text.begin(), LowerCased);
  return text;
}

using StoreChoice = std::optional<SRStore>;

// Pass 1: the whole address. Of several stores with the same URL the last one is taken: deliberate.
StoreChoice FindByWholeAddress(const StoreMap& stores, const std::wstring& url) {
  StoreChoice found;
  for (const auto& [id, store] : stores) {
    if (LowerCase(store.GetStoreURL()) == url) found = store;
  }
  return found;
}

// Store URLs without their discovery suffix; the first store of a URL keeps it.
std::map<std::wstring, SRStore> TrimmedStoreURLs(const StoreMap& stores) {
  std::map<std::wstring, SRStore> trimmed;
  for (const auto& [id, store] : stores) {
    std::wstring url = LowerCase(store.GetStoreURL());
    if (url.ends_with(kDiscoverySuffix)) url.erase(url.rfind(kDiscoverySuffix));
    trimmed.emplace(url, store);
  }
  return trimmed;
}

// Removes the last path segment with its slash. The host and the first slash after it are never cut away.
bool CutBack(std::wstring& url) {
  const std::size_t separator = url.find(kSchemeSeparator);
  const std::size_t host = separator == std::wstring::npos ? 0 : separator + 3;
  const std::size_t first = url.find(kPathSeparator, host);
  const std::size_t last = url.rfind(kPathSeparator);
  if (first == std::wstring::npos || last <= first) return false;
  url.erase(last);
  return true;
}

// Pass 2: the address cut back segment by segment. The uncut request is deliberately not compared.
StoreChoice FindByTrimmedAddress(const StoreMap& stores, std::wstring url) {
  SR_TRACE(0) << "SRProvider::GetStoreFromURL full store address not found, checking by trimming URLs";
  const auto trimmed = TrimmedStoreURLs(stores);
  while (CutBack(url)) {
    for (const auto& [key, store] : trimmed) {
      SR_TRACE(0) << "SRProvider::GetStoreFromURL checking trimmedStoreUrl: " << url << ", against: " << key;
      if (url == key) return store;
    }
  }
  return std::nullopt;
}

// Pass 3: host and port anywhere in a store's URL, the loose last resort.
StoreChoice FindByHostAndPort(const StoreMap& stores, std::wstring address) {
  if (const std::size_t at = address.find(kSchemeSeparator); at != std::wstring::npos)
    address.erase(0, at + 3);
  if (const std::size_t at = address.find(kPathSeparator); at != std::wstring::npos) address.erase(at);
  if (address.empty()) return std::nullopt;
  SR_TRACE(0)
      << "SRProvider::GetStoreFromURL store address not found, looking for scheme-host-port, shpAddress is "
      << address;
  for (const auto& [id, store] : stores) {
    if (LowerCase(store.GetStoreURL()).find(address) != std::wstring::npos) return store;
  }
  return std::nullopt;
}

}  // namespace

bool SRProvider::GetStoreFromURL(const std::wstring& url, SRStore& store) const {
  const StoreMap stores = GetStores();
  const std::wstring lowered = LowerCase(url);
  StoreChoice found = FindByWholeAddress(stores, lowered);
  if (!found) found = FindByTrimmedAddress(stores, lowered);
  if (!found) found = FindByHostAndPort(stores, lowered);
  if (!found) {
    SR_TRACE(0) << "SRProvider::GetStoreFromURL failed to find matching store for URL: " << url;
    return false;
  }
  store = *found;
  SR_TRACE(0) << "SRProvider::GetStoreFromURL found matching store: " << store.GetStoreURL()
              << ", for URL: " << url;
  return true;
}

bool SRProvider::SetDefaultGatewayForStore(const std::wstring& storeURL, const std::wstring& gatewayName) {
  return SetDefaultGatewayWhere(&SRStore::GetStoreURL, storeURL, gatewayName);
}

bool SRProvider::SetDefaultGatewayForStoreID(const std::wstring& storeID, const std::wstring& gatewayName) {
  return SetDefaultGatewayWhere(&SRStore::GetStoreID, storeID, gatewayName);
}

bool SRProvider::SetDefaultGatewayWhere(std::wstring (SRStore::*field)() const, const std::wstring& value,
                                        const std::wstring& gatewayName) {
  const CriticalSectionLock lock(*lock_);
  const auto match = std::find_if(stores_.begin(), stores_.end(),
                                  [&](const auto& entry) { return (entry.second.*field)() == value; });
  return match != stores_.end() && match->second.SetDefaultGateway(gatewayName);
}

std::vector<std::pair<std::wstring, std::wstring>> SRProvider::PrepareOtherGateways(SRStore& store) const {
  SRGateway defaultGateway;
  store.GetDefaultGatewayRef(defaultGateway);
  std::vector<std::pair<std::wstring, std::wstring>> others;
  for (const SRGateway& gateway : store.GetGateways()) {
    if (!(gateway == defaultGateway)) others.emplace_back(gateway.GetName(), gateway.GetLocation());
  }
  return others;
}

}  // namespace ServiceRecords
