#include "SRLib/Provider/Opening.h"

#include <poll.h>

#include <algorithm>
#include <cassert>
#include <utility>

namespace ServiceRecords {
namespace {

using Openings::Outcome;

thread_local Opening* g_openingOfThisThread = nullptr;

bool IsAccepted(std::optional<Outcome> outcome) {
  return outcome == Outcome::Added || outcome == Outcome::Replaced;
}

}  // namespace

Opening::Handling::Handling(Opening& opening) {
  assert(g_openingOfThisThread == nullptr);
  g_openingOfThisThread = &opening;
}

Opening::Handling::~Handling() {
  g_openingOfThisThread = nullptr;
}

const Opening* Opening::OfThisThread() {
  return g_openingOfThisThread;
}

bool Opening::IsWithdrawn() {
  if (g_openingOfThisThread == nullptr) return false;
  pollfd withdrawal{g_openingOfThisThread->origin_.withdrawalDescriptor, POLLIN, 0};
  return ::poll(&withdrawal, 1, 0) > 0;
}

void Opening::AskOn(Display::Variables desktop) {
  if (g_openingOfThisThread != nullptr) g_openingOfThisThread->origin_.desktop = std::move(desktop);
}

std::vector<Opening::Store> Opening::Stores() const {
  std::vector<Store> stores;
  stores.reserve(stores_.size());
  for (const auto& [id, progress] : stores_) stores.push_back(Decided(progress));
  return stores;
}

Opening::Store Opening::Decided(const Progress& progress) const {
  Store store = progress.store;
  if (whyNotSaved_ && (!progress.outcome || IsAccepted(progress.outcome))) {
    store.outcome = Outcome::NotSaved;
    store.reason = *whyNotSaved_;
  } else {
    store.outcome = progress.outcome.value_or(Outcome::Ended);
  }
  return store;
}

Outcome Opening::GravestOutcome() const {
  const std::vector<Store> stores = Stores();
  const auto gravest = std::ranges::max_element(stores, {}, &Store::outcome);
  return gravest == stores.end() ? withoutStores_ : gravest->outcome;
}

void Opening::BreakOff(const std::wstring& reason) {
  if (withoutStores_ == Outcome::Ended) {
    withoutStores_ = Outcome::NotSaved;
    reasonWithoutStores_ = reason;
  }
  if (whyNotSaved_) return;
  for (auto& [id, progress] : stores_) {
    if (progress.outcome) continue;
    progress.outcome = Outcome::NotSaved;
    progress.store.reason = reason;
  }
}

void Opening::NoteUnread(const std::wstring& reason) {
  if (g_openingOfThisThread == nullptr) return;
  NoteStores({});
  g_openingOfThisThread->isUnread_ = true;
  g_openingOfThisThread->reasonWithoutStores_ = reason;
}

void Opening::NoteStores(const StoreMap& stores) {
  if (g_openingOfThisThread == nullptr) return;
  g_openingOfThisThread->withoutStores_ = Outcome::NotAServiceRecord;
  for (const auto& [id, store] : stores) {
    g_openingOfThisThread->stores_[id] = {{id, store.GetStoreName(), store.GetStoreURL(), Outcome::Ended, {}},
                                          std::nullopt};
  }
}

void Opening::NoteAccepted(const std::wstring& id, bool isReplacement) {
  Decide(id, isReplacement ? Outcome::Replaced : Outcome::Added);
}

void Opening::NoteDeclined(const std::wstring& id) {
  Refuse(id, Outcome::Declined);
}

void Opening::NoteNotVerified(const std::wstring& id, const std::wstring& reason) {
  Refuse(id, Outcome::ServerNotVerified, reason);
}

void Opening::NoteNotSaved(const std::wstring& reason) {
  if (g_openingOfThisThread != nullptr) g_openingOfThisThread->whyNotSaved_ = reason;
}

void Opening::NoteSaved() {
  if (g_openingOfThisThread != nullptr) g_openingOfThisThread->whyNotSaved_.reset();
}

void Opening::NoteHindrance(Outcome hindrance) {
  if (g_openingOfThisThread != nullptr) g_openingOfThisThread->hindrance_ = hindrance;
}

void Opening::Refuse(const std::wstring& id, Outcome outcome, const std::wstring& reason) {
  if (g_openingOfThisThread == nullptr) return;
  const auto hindrance = std::exchange(g_openingOfThisThread->hindrance_, std::nullopt);
  if (hindrance) return Decide(id, *hindrance);
  Decide(id, outcome, reason);
}

void Opening::Decide(const std::wstring& id, Outcome outcome, const std::wstring& reason) {
  if (g_openingOfThisThread == nullptr) return;
  const auto store = g_openingOfThisThread->stores_.find(id);
  if (store == g_openingOfThisThread->stores_.end()) return;
  store->second.outcome = outcome;
  store->second.store.reason = reason;
}

}  // namespace ServiceRecords
