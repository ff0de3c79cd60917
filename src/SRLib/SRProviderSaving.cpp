// How the provider restores and saves its list, and what it does while it cannot.
#include "SRLib/GenericCS.h"
#include "SRLib/IServiceRecordsNotifications.h"
#include "SRLib/Messages.h"
#include "SRLib/Publication.h"
#include "SRLib/SRProvider.h"
#include "SRLib/Trace.h"

#include <utility>

namespace ServiceRecords {

void SRProvider::RestoreFromRepository() {
  const CriticalSectionLock lock(*lock_);
  if (std::optional<StoreMap> restored = saved_.Restore()) stores_ = std::move(*restored);
  SetAllServiceRecordsToList(stores_);
}

void SRProvider::SaveAllStores() {
  // Under the lock, or a merge on another thread would be torn.
  const CriticalSectionLock lock(*lock_);
  if (MayChange()) SaveAndPublish();
}

void SRProvider::Save() {
  WhileNotSaving([this] { saved_.Save(stores_); });
}

void SRProvider::SaveAndPublish() {
  Save();
  SetAllServiceRecordsToList(stores_);
}

bool SRProvider::MayChange() {
  const CriticalSectionLock lock(*lock_);
  if (saved_.CurrentState() == SavedStores::State::Unreadable) RestoreFromRepository();
  if (saved_.CurrentState() != SavedStores::State::Unreadable) return true;
  SR_TRACE(2) << "...The saved stores cannot be read, so nothing is changed.";
  return false;
}

bool SRProvider::MayChangeOrTell(int title) {
  if (MayChange()) return true;
  Notification()->ShowSRErrorDialog(util::MessageFromResourceW(title),
                                    util::MessageFromResourceW(util::kMessageStoresNotRead));
  return false;
}

void SRProvider::RetryWith(SavedStores::StartTimer startTimer) {
  const CriticalSectionLock lock(*lock_);
  saved_.RetryWith(std::move(startTimer));
}

bool SRProvider::TryAgain() {
  const CriticalSectionLock lock(*lock_);
  if (!saved_.TakeRetry()) return false;
  if (saved_.CurrentState() == SavedStores::State::Unreadable) {
    RestoreFromRepository();
    return saved_.CurrentState() == SavedStores::State::Good;
  }
  Save();
  return false;
}

SavedStores::State SRProvider::StateOfSavedStores() const {
  const CriticalSectionLock lock(*lock_);
  return saved_.CurrentState();
}

}  // namespace ServiceRecords
