#pragma once

#include "SRLib/Platform/GenericCS.h"
#include "SRLib/Provider/HeldStores.h"
#include "SRLib/Provider/ListChange.h"
#include "SRLib/Provider/ProviderParts.h"
#include "SRLib/Provider/SavedStores.h"
#include "SRLib/SRStore.h"
#include "libs/ThreadSafety/ThreadSafety.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ServiceRecords {

class IServiceRecordsNotifications;
class SSLValidationDetails;
struct FetchedDocument;

// The one owner of the provisioned stores, and every flow that reads or changes them. Any thread; the
// recursive critical section guards the map. It is never held across network calls or trust dialogs; the
// store-replace dialog alone is shown while it is held. Every change that reaches the repository is published
// at once. While the saved stores cannot be read the list is empty, and what would change it is refused.
class SRProvider {
 public:
  // Restores the stores from the repository and publishes them.
  explicit SRProvider(ProviderParts parts);
  ~SRProvider();
  SRProvider(const SRProvider&) = delete;
  SRProvider& operator=(const SRProvider&) = delete;

  // What the provider of the process is made of. Once, before the first use of it.
  static void Register(ProviderParts parts);
  // The provider of the process, made on first use.
  static SRProvider& Instance();

  void RestoreFromRepository();

  // `startTimer` is called, on any thread, when something that failed is to be tried again, and TryAgain when
  // the time is over: reading the saved stores, or saving the list. `listWasRead` is called, without the
  // lock, by whichever try or change has read the stores at last, so that the list is another.
  void RetryWith(SavedStores::StartTimer startTimer, std::function<void()> listWasRead);
  void TryAgain();
  // Tries once more to save a list that could not be saved; any other one is left alone.
  void SaveWhatIsUnsaved();
  // Waits for nobody.
  [[nodiscard]] SavedStores::State StateOfSavedStores() const { return saved_.CurrentState(); }

  // Not owned. Must be set before any flow that may show a dialog.
  void InitNotificationManager(IServiceRecordsNotifications* notifications) {
    notifications_ = notifications;
  }
  [[nodiscard]] IServiceRecordsNotifications* Notification() const;

  // Merges a document that the client handed in, as confirmed by the discovery service. `updated` tells
  // whether the list changed. A document without stores shows an error dialog.
  void InboundUpdate(const std::wstring& document, bool& updated);

  // Merges `incoming`, which may be changed, into the list; the caller holds the lock, saves and publishes.
  // Without `dsTrusted` the user is asked before a store already held is replaced. Nothing is merged when the
  // list would pass a bound with it.
  void MergeStores(StoreMap& incoming, bool dsTrusted, bool& updated) SR_REQUIRES(*lock_);

  // True when a store of that id was removed; the change is saved and published.
  bool RemoveStore(const std::wstring& id);
  // A copy to work on.
  [[nodiscard]] StoreMap GetStores() const;
  // The list as it was published last. Waits for nobody, never null. What is not saved yet (MergeStores, the
  // setters of the default gateway) is not in it.
  [[nodiscard]] std::shared_ptr<const StoreSnapshot> Snapshot() const;
  // Does `work` while no list is being saved, and none begins to be: also while another thread holds the lock
  // and shows a dialog, or makes the provider.
  static void WhileNotSaving(const std::function<void()>& work);
  // Saves the list as it is and publishes it.
  void SaveAllStores();

  // The flow over a file that the user opened. `filePath` carries one delimiter character at each end.
  // `accepted` receives the file's stores when the list changed, and is otherwise empty.
  void OutboundUserConfirm(const std::wstring& filePath, StoreMap& accepted);
  // Whether the store's server is trusted by the system and by the user.
  bool VerifyUserTrust(SRStore& store);
  // Validates the server at `url` and asks the user to trust the store. The second URL is not used.
  bool VerifyServer(SRStore& store, const std::wstring& url, const std::wstring& secondUrl,
                    SSLValidationDetails& details);

  // Asks each accepted store for its own discovery document and merges what these say as confirmed by the
  // discovery service, save what a document has no say in (FetchedDocument.h); a cancelled or failed store
  // does not keep the others from it. `updated` tells whether the list changed, which is saved and published
  // then.
  void OutboundDSConfirm(StoreMap& stores, bool& updated);
  // Whether the store answered with a discovery document, which is then in `discoveryDocument`. The user is
  // told of a failure; one that the user brought about by cancelling sets `canceled`.
  bool VerifyDSTrust(SRStore& store, std::wstring& discoveryDocument, bool& canceled);
  // Merges the stores of the documents, not `stores`, wherever they lie. The caller holds the lock, saves and
  // publishes.
  void MergeDiscoveryDocs(const StoreMap& stores, const std::vector<std::wstring>& documents, bool& updated)
      SR_REQUIRES(*lock_);
  // Fetches the store's discovery response (StoreConnection.h).
  bool MakeConnection(SRStore& store, std::wstring& response, bool& canceled);

  // Finds the store that a URL points at (StoreSearch.h). `store` is untouched when there is none.
  bool GetStoreFromURL(const std::wstring& url, SRStore& store) const;
  // The same in the list as it was published last; null when there is none. Waits for nobody.
  [[nodiscard]] std::shared_ptr<const SRStore> GetPublishedStoreFromURL(const std::wstring& url) const;

  // Move the default mark of the first matching store (exact, case-sensitive) to the named gateway. The
  // caller saves with SaveAllStores.
  bool SetDefaultGatewayForStore(const std::wstring& storeURL, const std::wstring& gatewayName);
  bool SetDefaultGatewayForStoreID(const std::wstring& storeID, const std::wstring& gatewayName);
  // Name and location of every gateway other than the store's default.
  [[nodiscard]] std::vector<std::pair<std::wstring, std::wstring>> PrepareOtherGateways(SRStore& store) const;

 private:
  // The document's stores; none when the list would pass a bound with them.
  [[nodiscard]] StoreMap ReadDocument(const std::wstring& document, bool dsTrusted) const;
  void MergeFetchedDocuments(const std::vector<FetchedDocument>& documents,
                             const std::set<std::wstring>& removed, bool& updated) SR_REQUIRES(*lock_);
  void MergeConfirmed(StoreMap& confirmed, bool& updated) SR_REQUIRES(*lock_);
  // The ids that are removed from now on, for as long as the result is kept. To be read under the lock.
  [[nodiscard]] std::shared_ptr<const std::set<std::wstring>> WatchRemovals();
  // Takes what was read into the list and publishes it. The caller holds the lock.
  void TakeReading(SavedStores::Reading reading) SR_REQUIRES(*lock_);
  // These three are called without the lock. Reads the saved stores, which could not be read before; true
  // when they are in the list now.
  bool ReadAgain() SR_EXCLUDES(*lock_);
  // Whether the saved stores have been read; tries to read them when they have not.
  bool MayChange() SR_EXCLUDES(*lock_);
  // The same; tells the user when not, under the title with that id.
  bool MayChangeOrTell(int title) SR_EXCLUDES(*lock_);

  void Save() SR_REQUIRES(*lock_);
  void SaveAndPublish() SR_REQUIRES(*lock_);
  // What the next SaveAndPublish announces, too.
  ListChange& NoteChange(ListChange::Kind kind, const SRStore& store) SR_REQUIRES(*lock_);
  void Publish() SR_REQUIRES(*lock_);
  // Whether the user wants the record instead of the one that is held.
  [[nodiscard]] bool MayReplace(const SRStore& held, const SRStore& incoming) const;
  // MergeStores; false when nothing was merged because the list would pass a bound.
  bool MergeWithinBounds(StoreMap& incoming, bool dsTrusted, bool& updated) SR_REQUIRES(*lock_);
  [[nodiscard]] bool MergeAccepted(StoreMap& stores, StoreMap& accepted);
  void ShowError(int title, int message) const;
  void RefuseBeyond(const std::string& bound, bool dsTrusted) const;
  // Why the server is not trusted.
  [[nodiscard]] std::wstring ReasonOf(const SSLValidationDetails& details) const;
  // Tells the user that the server at this URL is not trusted.
  void TellNotVerified(const SRStore& store, const std::wstring& url,
                       const SSLValidationDetails& details) const;
  // Tells the user that an accepted store is not confirmed, by the message with that id.
  void TellNotConfirmed(const SRStore& store, int message) const;
  // Tells the user that an opened file counts as one without stores.
  void TellNoStores() const;
  bool SetDefaultGatewayWhere(std::wstring (SRStore::*field)() const, const std::wstring& value,
                              const std::wstring& gatewayName);

  const ProviderParts parts_;
  HeldStores stores_ SR_GUARDED_BY(*lock_);
  std::vector<ListChange> changes_ SR_GUARDED_BY(*lock_);  // since the list was saved last
  mutable ThreadSafety::Mutex publishedMutex_;             // held for as long as a pointer is copied
  std::shared_ptr<const StoreSnapshot> published_ SR_GUARDED_BY(publishedMutex_) = stores_.Snapshot();
  SavedStores saved_;
  std::function<void()> listWasRead_ SR_GUARDED_BY(*lock_);
  std::vector<std::weak_ptr<std::set<std::wstring>>> removalWatches_ SR_GUARDED_BY(*lock_);
  const std::unique_ptr<CGenericCS> lock_;  // ends before what it guards
  IServiceRecordsNotifications* notifications_ = nullptr;
};

}  // namespace ServiceRecords
