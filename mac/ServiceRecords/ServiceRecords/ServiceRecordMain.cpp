#include "ServiceRecordMain.h"

#include "Bus/DistributedNotificationCenter.h"
#include "DbgTrace.h"
#include "MacISRNotificationManager.h"
#include "MacSRHTTPRequest.h"
#include "MacSSLValidation.h"
#include "Process/BackgroundTasks.h"
#include "Process/MainLoop.h"
#include "Process/PlatformParts.h"
#include "SRLib/SRProvider.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Trace/Trace.h"
#include "libs/Warden_SDK/MorvaneWarden.h"
#include "libs/Wayfinder/Wayfinder.h"

#include <functional>
#include <optional>

using namespace ServiceRecords;

namespace {

Agent::ClientActivation& TheClientActivation() {
  static Agent::ClientActivation bringForward;
  return bringForward;
}

Agent::ChangeAnnouncement& TheChangeAnnouncement() {
  static Agent::ChangeAnnouncement announce;
  return announce;
}

// Inside the provider's lock, so that the main thread tells of the changes in their order.
void AnnounceChanges(const std::vector<ListChange>& changes) {
  Agent::MainLoop::Main().Post([changes] {
    if (TheChangeAnnouncement()) TheChangeAnnouncement()(changes);
  });
}

// Of an opening that has put them into the list, be it saved or not.
bool IsAccepted(const Opening::Store& store) {
  return store.outcome == Openings::Outcome::Added || store.outcome == Openings::Outcome::Replaced ||
         store.outcome == Openings::Outcome::NotSaved;
}

void BringClientForward() {
  const Opening* const opening = Opening::OfThisThread();
  std::vector<Opening::Store> stores = opening != nullptr ? opening->Stores() : std::vector<Opening::Store>();
  std::erase_if(stores, std::not_fn(IsAccepted));
  const Display::Variables desktop = opening != nullptr ? opening->GetOrigin().desktop : Display::Variables();
  Agent::MainLoop::Main().Post([stores, desktop] {
    if (TheClientActivation()) TheClientActivation()(stores, desktop);
  });
}

// On the location library's thread.
void AnnounceLocation(const char* storeURL, std::uint32_t /*location*/) {
  Agent::DistributedNotificationCenter::defaultCenter().postNotificationName(
      Bus::ServiceNames::kLocationChangedNotification, storeURL);
}

void LogAuthentication(int level, const wchar_t* message) {
  SR_TRACE(static_cast<std::uint32_t>(level)) << message;
}

// On a thread that handles a file: the credential program may be asking the user.
void NoteLogOn(int waits) noexcept {
  thread_local std::optional<Agent::BackgroundTasks::UserWait> logOn;
  if (waits != 0) {
    logOn.emplace(Agent::BackgroundTasks::UserWait::End::InTurn);
  } else {
    logOn.reset();
  }
}

}  // namespace

namespace Agent {

void AnnounceStores() {
  DistributedNotificationCenter::defaultCenter().postNotificationName(
      Bus::ServiceNames::kStoresUpdatedNotification, Bus::ServiceNames::kStoresUpdatedObject);
}

void SetClientActivation(ClientActivation bringForward) {
  TheClientActivation() = std::move(bringForward);
}

void SetChangeAnnouncement(ChangeAnnouncement announce) {
  TheChangeAnnouncement() = std::move(announce);
}

}  // namespace Agent

void ServiceRecordInit() {
  WFSetCustomLogFunc(ServiceRecordWFLogFunc);
  WFSetLocationFunc(AnnounceLocation);
  MorvaneWarden_SetLogFunction(LogAuthentication);
  MorvaneWarden_SetWaitFunction(NoteLogOn);
  ServiceRecordUpdateLoggingFromPrefs();
  MacSRHTTPRequestFactory::Init();
  MacSSLValidationFactory::Init();
  ProviderParts parts = Agent::PlatformParts();
  parts.announce = AnnounceChanges;
  SRProvider::Register(std::move(parts));
  MacIServiceRecordsNotifications::Init();
}

bool ServiceRecordHandleFTA(const char* path) {
  StoreMap accepted;
  SRProvider::Instance().OutboundUserConfirm(util::widen(path), accepted);
  if (accepted.empty()) return false;
  bool updated = false;  // the announcement does not depend on it
  SRProvider::Instance().OutboundDSConfirm(accepted, updated);
  Agent::AnnounceStores();
  BringClientForward();
  return true;
}
