#include "ServiceRecordMain.h"

#include "DbgTrace.h"
#include "DistributedNotificationCenter.h"
#include "MacISRNotificationManager.h"
#include "MacSRHTTPRequest.h"
#include "MacSSLValidation.h"
#include "MainLoop.h"
#include "SRLib/SRProvider.h"
#include "SRLib/TextHelpers.h"
#include "libs/Wayfinder/Wayfinder.h"

using namespace ServiceRecords;

namespace {

std::function<void()>& ClientActivation() {
  static std::function<void()> bringForward;
  return bringForward;
}

}  // namespace

void SetClientActivation(std::function<void()> bringForward) {
  ClientActivation() = std::move(bringForward);
}

void ServiceRecordInit() {
  WFSetCustomLogFunc(ServiceRecordWFLogFunc);
  ServiceRecordUpdateLoggingFromPrefs();
  MacSRHTTPRequestFactory::Init();
  MacSSLValidationFactory::Init();
  MacIServiceRecordsNotifications::Init();
}

bool ServiceRecordHandleFTA(const char* path) {
  StoreMap accepted;
  SRProvider::Instance().OutboundUserConfirm(util::widen(path), accepted);
  if (accepted.empty()) return false;
  DistributedNotificationCenter::defaultCenter().postNotificationName(kStoresUpdatedNotification,
                                                                      kStoresUpdatedObject);
  MainLoop::Main().Post([] {
    if (ClientActivation()) ClientActivation()();
  });
  return true;
}
