#include "SRLib/SRProvider.h"

#include "SRLib/Platform/GenericCS.h"
#include "SRLib/Platform/IServiceRecordsNotifications.h"
#include "SRLib/Platform/Messages.h"
#include "SRLib/Platform/SSLValidationDetails.h"
#include "SRLib/Provider/DialogSubject.h"
#include "SRLib/Provider/FetchedDocument.h"
#include "SRLib/Provider/Opening.h"
#include "SRLib/Provider/StoreBounds.h"
#include "SRLib/Provider/StoreConnection.h"
#include "SRLib/Provider/StoreSearch.h"
#include "SRLib/SRXMLProvider.h"
#include "SRLib/SSLValidation.h"
#include "SRLib/SSLValidationFactory.h"
#include "libs/Lifetime/NoDestructor.h"
#include "libs/Text/TextHelpers.h"
#include "libs/ThreadSafety/ThreadSafety.h"
#include "libs/Trace/Trace.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

namespace ServiceRecords {
namespace {

// Innermost but for the configuration's. It keeps the end of the process from a save.
ThreadSafety::Mutex& SaveLock() {
  static Lifetime::NoDestructor<ThreadSafety::Mutex> mutex;
  return *mutex;
}

std::optional<ProviderParts>& RegisteredParts() {
  static std::optional<ProviderParts> parts;
  return parts;
}

// Nothing when the log is off, so that no text is made for it.
SearchRecord RecordOfLookup() {
  if (!trace::IsEnabled()) return nullptr;
  return [](const std::wstring& step) { SR_TRACE(0) << "SRProvider::GetStoreFromURL " << step; };
}

}  // namespace

void SRProvider::Register(ProviderParts parts) {
  RegisteredParts().emplace(std::move(parts));
}

SRProvider& SRProvider::Instance() {
  static SRProvider provider(RegisteredParts().value());
  return provider;
}

SRProvider::SRProvider(ProviderParts parts)
    : parts_(std::move(parts)),
      saved_(parts_.configuration),
      lock_(parts_.criticalSections.ManufactureCriticalSection()) {
  RestoreFromRepository();
}

SRProvider::~SRProvider() = default;

IServiceRecordsNotifications* SRProvider::Notification() const {
  if (notifications_ != nullptr) return notifications_;
  SR_TRACE(2) << "Notification manager for Service Records is not initialized.";
  SR_TRACE(2) << "Service Records logic will not work correctly.";
  return nullptr;
}

void SRProvider::InboundUpdate(const std::wstring& document, bool& updated) {
  SR_TRACE(0) << "-> Inbound SR update started. Document contents: " << document;
  updated = false;
  StoreMap parsed = ReadDocument(document, true);
  bool hasStores = !parsed.empty();
  if (hasStores) {
    SR_TRACE(0) << "...SR document parsed successfully.";
    if (MayChangeOrTell(util::kMessageDiscoveryTitle)) {
      const CriticalSectionLock lock(*lock_);
      hasStores = MergeWithinBounds(parsed, true, updated);
      if (updated) SaveAndPublish();
    }
  }
  if (!hasStores) {
    SR_TRACE(2) << "...Failed to parse SR document.";
    ShowError(util::kMessageDiscoveryTitle, util::kMessageNotAServiceRecord);
  }
  SR_TRACE(0) << "<- Inbound SR update finished";
}

StoreMap SRProvider::ReadDocument(const std::wstring& document, bool dsTrusted) const {
  StoreMap stores = SRXMLProvider().Parse(document);
  Opening::NoteStores(stores);
  const CriticalSectionLock lock(*lock_);
  const auto bound = BoundPassedByMerge(stores_.Get(), stores, dsTrusted);
  if (!bound) return stores;
  RefuseBeyond(*bound, dsTrusted);
  return {};
}

void SRProvider::RefuseBeyond(const std::string& bound, bool dsTrusted) const {
  SR_TRACE(2) << "...The document is not taken: with it the list would hold " << bound;
  if (!dsTrusted) Opening::NoteNotSaved(parts_.message(util::kReasonListFull));
}

void SRProvider::MergeStores(StoreMap& incoming, bool dsTrusted, bool& updated) {
  static_cast<void>(MergeWithinBounds(incoming, dsTrusted, updated));
}

bool SRProvider::MergeWithinBounds(StoreMap& incoming, bool dsTrusted, bool& updated) {
  updated = false;
  const StoreMap& stores = stores_.Get();
  StoreMap changed;  // put into the list at the end, so that a failure on the way leaves it as it was
  for (auto& [id, store] : incoming) {
    const auto held = stores.find(id);
    if (held == stores.end()) {
      if (dsTrusted) {
        store.SetAllGatewaysDSTrusted();
        store.SetAllBeaconsDSConfirmed();
      }
      changed.emplace(id, store);
      if (!dsTrusted) Opening::NoteAccepted(id, false);
    } else if (dsTrusted || MayReplace(held->second, store)) {
      changed.emplace(id, held->second).first->second.Merge(store, dsTrusted, parts_.configuration);
    }
  }
  if (changed.empty()) return true;
  if (const auto bound = BoundPassed(stores, changed)) {
    RefuseBeyond(*bound, dsTrusted);
    return false;
  }
  StoreMap& merged = stores_.Change();
  for (auto& [id, store] : changed) {
    const auto held = merged.find(id);
    const auto ofHeld = dsTrusted ? ListChange::Kind::Confirmed : ListChange::Kind::Replaced;
    NoteChange(held == merged.end() ? ListChange::Kind::Added : ofHeld, store);
    if (held != merged.end()) held->second = std::move(store);
  }
  merged.merge(changed);
  updated = true;
  return true;
}

bool SRProvider::MayReplace(const SRStore& held, const SRStore& incoming) const {
  const DialogSubject subject(Replacement{held, incoming, parts_.configuration});
  const std::int32_t answer = Notification()->ShowStoreReplaceDialog(held.GetStoreName());
  const bool accepted = answer == IServiceRecordsNotifications::kAccepted;
  if (accepted) {
    Opening::NoteAccepted(incoming.GetStoreID(), true);
  } else {
    Opening::NoteDeclined(incoming.GetStoreID());
  }
  return accepted;
}

bool SRProvider::RemoveStore(const std::wstring& id) {
  SR_TRACE(0) << "-> RemoveStore started. Service Record ID is: " << id;
  bool removed = false;
  if (id.empty()) {
    SR_TRACE(2) << "Service Record Id is empty";
  } else if (MayChange()) {
    const CriticalSectionLock lock(*lock_);
    const auto store = stores_.Change().extract(id);
    removed = !store.empty();
    if (removed) {
      NoteChange(ListChange::Kind::Deleted, store.mapped());
      for (const auto& watch : removalWatches_) {
        if (const auto ids = watch.lock()) ids->insert(id);
      }
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
  return stores_.Get();
}

void SRProvider::WhileNotSaving(const std::function<void()>& work) {
  const ThreadSafety::MutexLock lock(SaveLock());
  work();
}

void SRProvider::OutboundUserConfirm(const std::wstring& filePath, StoreMap& accepted) {
  SR_TRACE(0) << "-> Outbound SR User confirmation started" << filePath;
  accepted.clear();
  std::wstring text;
  std::wstring reason;
  if (filePath.size() < 3 || !parts_.readDocument(filePath.substr(1, filePath.size() - 2), text, reason)) {
    SR_TRACE(2) << "...Failed to read SR file.";
    Opening::NoteUnread(reason);
    return;
  }
  StoreMap stores = ReadDocument(text, false);
  if (stores.empty()) {
    TellNoStores();
  } else if (MayChangeOrTell(util::kMessageStoreTitle)) {
    SR_TRACE(0) << "...SR document parsed successfully.";
    for (auto entry = stores.begin(); entry != stores.end();) {
      if (VerifyUserTrust(entry->second)) {
        ++entry;
      } else {
        SR_TRACE(0) << "......Failed trust for store: " << entry->first;
        entry = stores.erase(entry);
      }
    }
    // While the user was asked, others may have filled the list.
    if (!MergeAccepted(stores, accepted)) TellNoStores();
  } else {
    Opening::NoteNotSaved(parts_.message(util::kReasonListNotRead));
  }
  SR_TRACE(0) << "<- Outbound SR User confirmation finished. File: " << filePath;
}

void SRProvider::ShowError(int title, int message) const {
  Notification()->ShowSRErrorDialog(parts_.message(title), parts_.message(message));
}

void SRProvider::TellNoStores() const {
  const std::wstring message = parts_.message(util::kMessageNotAServiceRecord);
  SR_TRACE(2) << "..." << message;
  Notification()->ShowSRErrorDialog(parts_.message(util::kMessageStoreTitle), message);
}

bool SRProvider::MergeAccepted(StoreMap& stores, StoreMap& accepted) {
  const CriticalSectionLock lock(*lock_);
  bool updated = false;
  // Until it is, whatever comes in between.
  Opening::NoteNotSaved(parts_.message(util::kReasonBrokenOff));
  if (!MergeWithinBounds(stores, false, updated)) return false;
  if (!updated) return true;
  accepted = stores;  // also those whose replacement the user declined
  SaveAndPublish();
  if (StateOfSavedStores() == SavedStores::State::Unsaved) {
    Opening::NoteNotSaved(parts_.message(util::kReasonListNotWritten));
  } else {
    Opening::NoteSaved();
  }
  return true;
}

bool SRProvider::VerifyUserTrust(SRStore& store) {
  SRGateway gateway;
  const bool hasGateway = store.GetDefaultGatewayRef(gateway, parts_.configuration);
  SSLValidationDetails details;
  std::wstring asked = gateway.GetLocation();
  if (hasGateway && VerifyServer(store, asked, asked, details)) return true;
  // The store's own address stands in only for a gateway that could not be reached.
  if (!hasGateway || details.Result == SSLValidationDetails::kServerNotContacted) {
    details.Reset();
    asked = store.GetStoreURL();
    if (VerifyServer(store, asked, gateway.GetLocation(), details)) return true;
  }
  if (details.Result == SSLValidationDetails::kUserDoesNotTrustServer) {
    Opening::NoteDeclined(store.GetStoreID());
  } else {
    Opening::NoteNotVerified(store.GetStoreID(), ReasonOf(details));
    TellNotVerified(store, asked, details);
  }
  return false;
}

// The dialog's message says as much as the general ones.
std::wstring SRProvider::ReasonOf(const SSLValidationDetails& details) const {
  if (!details.Reason.empty()) return details.Reason;
  return parts_.message(details.Result == SSLValidationDetails::kCertificatesNotFetched
                            ? util::kReasonNotSecured
                            : util::kReasonNotReached);
}

void SRProvider::TellNotVerified(const SRStore& store, const std::wstring& url,
                                 const SSLValidationDetails& details) const {
  std::wstring message;
  for (const std::wstring& error : details.Errors) message += error + L" ";
  const DialogSubject subject(
      ServerProblem{url, store.GetStoreName(), details.Reason, details.TechnicalDetails});
  Notification()->ShowSRErrorDialog(parts_.message(util::kMessageStoreTitle), message);
}

bool SRProvider::VerifyServer(SRStore& store, const std::wstring& url, const std::wstring& /*secondUrl*/,
                              SSLValidationDetails& details) {
  if (Opening::IsWithdrawn()) {
    details.Result = SSLValidationDetails::kUserDoesNotTrustServer;
    return false;
  }
  const std::unique_ptr<SSLValidation> validation = parts_.validations.Create(url);
  SR_TRACE(0) << ".......Validation for server: " << url;
  if (!validation->ValidateURL(details)) {
    SR_TRACE(0) << "........-> SSL validation failure";
    return false;
  }
  SRGateway gateway;
  store.GetDefaultGatewayRef(gateway, parts_.configuration);
  const auto otherGateways = PrepareOtherGateways(store);
  const DialogSubject subject(VerifiedServer{url, url == gateway.GetLocation()});
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
  const auto removed = WatchRemovals();
  std::wstring document;
  std::vector<FetchedDocument> documents;
  bool canceled = false;  // for all stores together: deliberately not cleared before each of them
  for (auto& [id, store] : stores) {
    if (VerifyDSTrust(store, document, canceled)) {
      SR_TRACE(0) << "...DS trust verification succeded for store: " << store.GetStoreID();
      SR_TRACE(0) << "...Received DiscoveryDocument: " << document;
      documents.push_back({store.GetStoreID(), store.GetStoreURL(), std::move(document)});
      document.clear();
    } else if (canceled) {
      SR_TRACE(0) << "...DS trust verification was canceled by user for store: " << store.GetStoreID();
    } else {
      SR_TRACE(0) << "...DS trust verification failed for store: " << store.GetStoreID();
    }
  }
  if (!documents.empty() && MayChangeOrTell(util::kMessageStoreTitle)) {
    const CriticalSectionLock lock(*lock_);
    MergeFetchedDocuments(documents, *removed, updated);
    if (updated) SaveAndPublish();
    // With the whole list that was saved now, or with an earlier one.
    if (StateOfSavedStores() == SavedStores::State::Good) Opening::NoteSaved();
  }
  SR_TRACE(0) << "<- Outbound DS confirmation finished";
}

std::shared_ptr<const std::set<std::wstring>> SRProvider::WatchRemovals() {
  auto removed = std::make_shared<std::set<std::wstring>>();
  const CriticalSectionLock lock(*lock_);
  std::erase_if(removalWatches_, [](const auto& watch) { return watch.expired(); });
  removalWatches_.push_back(removed);
  return removed;
}

bool SRProvider::VerifyDSTrust(SRStore& store, std::wstring& discoveryDocument, bool& canceled) {
  std::wstring response;
  if (!MakeConnection(store, response, canceled)) {
    if (!canceled) TellNotConfirmed(store, util::kMessageDiscoveryConnectionFailed);
    return false;
  }
  if (SRXMLProvider::IsDiscovery(response)) {
    discoveryDocument = std::move(response);
    return true;
  }
  TellNotConfirmed(store, util::kMessageNotADiscoveryDocument);
  return false;
}

// That it is not confirmed sounds as if it had not been added. Others may have removed it meanwhile.
void SRProvider::TellNotConfirmed(const SRStore& store, int message) const {
  const bool isListed = Snapshot()->ByID(store.GetStoreID()) != nullptr;
  const DialogSubject subject(ServerProblem{store.GetStoreURL(), store.GetStoreName(),
                                            isListed ? parts_.message(util::kReasonInList) : std::wstring()});
  ShowError(util::kMessageStoreTitle, message);
}

bool SRProvider::MakeConnection(SRStore& store, std::wstring& response, bool& canceled) {
  return StoreConnection(parts_).Make(store, response, canceled);
}

void SRProvider::MergeDiscoveryDocs(const StoreMap& /*stores*/, const std::vector<std::wstring>& documents,
                                    bool& updated) {
  updated = false;
  SRXMLProvider provider;
  for (const std::wstring& document : documents) {
    StoreMap confirmed = provider.Parse(document);
    MergeConfirmed(confirmed, updated);
  }
}

void SRProvider::MergeFetchedDocuments(const std::vector<FetchedDocument>& documents,
                                       const std::set<std::wstring>& removed, bool& updated) {
  SRXMLProvider provider;
  for (const FetchedDocument& document : documents) {
    StoreMap confirmed = provider.Parse(document.text);
    PassOverStoresOfOthers(document, stores_.Get(), removed, confirmed);
    MergeConfirmed(confirmed, updated);
  }
}

void SRProvider::MergeConfirmed(StoreMap& confirmed, bool& updated) {
  bool changed = false;
  MergeStores(confirmed, true, changed);
  if (changed) updated = true;
}

bool SRProvider::GetStoreFromURL(const std::wstring& url, SRStore& store) const {
  std::shared_ptr<const StoreSnapshot> stores;
  {
    const CriticalSectionLock lock(*lock_);
    stores = stores_.Snapshot();
  }
  const SRStore* const found = FindStoreByURL(stores->URLs(), url, RecordOfLookup());
  if (found != nullptr) store = *found;
  return found != nullptr;
}

std::shared_ptr<const SRStore> SRProvider::GetPublishedStoreFromURL(const std::wstring& url) const {
  const std::shared_ptr<const StoreSnapshot> stores = Snapshot();
  return {stores, FindStoreByURL(stores->URLs(), url, RecordOfLookup())};
}

bool SRProvider::SetDefaultGatewayForStore(const std::wstring& storeURL, const std::wstring& gatewayName) {
  return SetDefaultGatewayWhere(&SRStore::GetStoreURL, storeURL, gatewayName);
}

bool SRProvider::SetDefaultGatewayForStoreID(const std::wstring& storeID, const std::wstring& gatewayName) {
  return SetDefaultGatewayWhere(&SRStore::GetStoreID, storeID, gatewayName);
}

bool SRProvider::SetDefaultGatewayWhere(std::wstring (SRStore::*field)() const, const std::wstring& value,
                                        const std::wstring& gatewayName) {
  if (!MayChange()) return false;
  const CriticalSectionLock lock(*lock_);
  StoreMap& stores = stores_.Change();
  const auto match = std::find_if(stores.begin(), stores.end(),
                                  [&](const auto& entry) { return (entry.second.*field)() == value; });
  if (match == stores.end() || !match->second.SetDefaultGateway(gatewayName)) return false;
  NoteChange(ListChange::Kind::DefaultGateway, match->second).defaultGateway = gatewayName;
  return true;
}

ListChange& SRProvider::NoteChange(ListChange::Kind kind, const SRStore& store) {
  changes_.push_back({kind, store.GetStoreID(), store.GetStoreName(), store.GetStoreURL()});
  return changes_.back();
}

std::vector<std::pair<std::wstring, std::wstring>> SRProvider::PrepareOtherGateways(SRStore& store) const {
  SRGateway defaultGateway;
  store.GetDefaultGatewayRef(defaultGateway, parts_.configuration);
  std::vector<std::pair<std::wstring, std::wstring>> others;
  for (const SRGateway& gateway : store.GetGateways()) {
    if (!(gateway == defaultGateway)) others.emplace_back(gateway.GetName(), gateway.GetLocation());
  }
  return others;
}

}  // namespace ServiceRecords
