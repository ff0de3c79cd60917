// How the provider restores and saves its list, and what it does while it cannot.
#include "SRLib/Platform/GenericCS.h"
#include "SRLib/Platform/Messages.h"
#include "SRLib/Provider/ProviderTrace.h"
#include "SRLib/SRProvider.h"

#include <utility>

namespace ServiceRecords {

void SRProvider::RestoreFromRepository() {
  const CriticalSectionLock lock(*lock_);
  TakeReading(saved_.Read());
}

void SRProvider::TakeReading(SavedStores::Reading reading) {
  saved_.TakeReading(reading);
  if (reading.stores) stores_.Change() = std::move(*reading.stores);
  Publish();
}

// Reads without the lock: whoever asks for the empty list must not wait for a disk that gives no answer.
bool SRProvider::ReadAgain() {
  SavedStores::Reading reading = saved_.Read();
  const bool wasRead = reading.stores.has_value();
  std::function<void()> listWasRead;
  {
    const CriticalSectionLock lock(*lock_);
    // Another thread has read them, and perhaps changed them since.
    if (saved_.CurrentState() != SavedStores::State::Unreadable) return true;
    TakeReading(std::move(reading));
    listWasRead = listWasRead_;
  }
  if (wasRead && listWasRead) listWasRead();
  return wasRead;
}

void SRProvider::SaveAllStores() {
  if (!MayChange()) return;
  // Under the lock, or a merge on another thread would be torn.
  const CriticalSectionLock lock(*lock_);
  SaveAndPublish();
}

void SRProvider::Save() {
  WhileNotSaving([this]() SR_REQUIRES(*lock_) { saved_.Save(stores_.Change()); });
}

void SRProvider::SaveAndPublish() {
  Save();
  Publish();
  const std::vector<ListChange> changes = std::exchange(changes_, {});
  if (parts_.announce && !changes.empty()) parts_.announce(changes);
}

void SRProvider::Publish() {
  const std::shared_ptr<const StoreSnapshot> snapshot = stores_.Snapshot();
  {
    const ThreadSafety::MutexLock lock(publishedMutex_);
    published_ = snapshot;
  }
  parts_.publish(snapshot);
}

std::shared_ptr<const StoreSnapshot> SRProvider::Snapshot() const {
  const ThreadSafety::MutexLock lock(publishedMutex_);
  return published_;
}

bool SRProvider::MayChange() {
  if (StateOfSavedStores() != SavedStores::State::Unreadable || ReadAgain()) return true;
  SR_PROVIDER_TRACE(2) << "...The saved stores cannot be read, so nothing is changed.";
  return false;
}

bool SRProvider::MayChangeOrTell(int title) {
  if (MayChange()) return true;
  ShowError(title, util::kMessageStoresNotRead);
  return false;
}

void SRProvider::RetryWith(SavedStores::StartTimer startTimer, std::function<void()> listWasRead) {
  const CriticalSectionLock lock(*lock_);
  listWasRead_ = std::move(listWasRead);
  saved_.RetryWith(std::move(startTimer));
}

void SRProvider::TryAgain() {
  {
    const CriticalSectionLock lock(*lock_);
    if (!saved_.TakeRetry()) return;
    if (saved_.CurrentState() == SavedStores::State::Unsaved) return Save();
  }
  ReadAgain();
}

void SRProvider::SaveWhatIsUnsaved() {
  const CriticalSectionLock lock(*lock_);
  if (saved_.CurrentState() == SavedStores::State::Unsaved) Save();
}

}  // namespace ServiceRecords
