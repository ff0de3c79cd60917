#include "AppDelegate.h"

#include "ApplicationBusObject.h"
#include "BeaconsBusObject.h"
#include "ClientApplication.h"
#include "DbgTrace.h"
#include "DesktopIntegration.h"
#include "DistributedNotificationCenter.h"
#include "MRVServiceRecordsSvr.h"
#include "MainLoop.h"
#include "MrvBeaconSvr.h"
#include "SRLib/SRProvider.h"
#include "ServiceRecordMain.h"
#include "ServiceRecordsBusObject.h"
#include "SystemLog.h"
#include "TerminationEvent.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace {

constexpr char kBeaconsName[] = "com.morvane.Beacons";
constexpr char kServiceRecordsName[] = "com.morvane.ServiceRecords";
constexpr char kLoggingNotification[] = "com.morvane.quillon.ServiceRecordsLoggingConfigurationDidChange";
constexpr std::chrono::seconds kTimeToFinish{5};

[[noreturn]] void ExitWith(const std::string& line) {
  SystemLog::Error(line);
  std::exit(EXIT_FAILURE);
}

std::string ErrorText(int result) {
  if (result == -EEXIST) return "the name has another owner";
  return std::generic_category().message(-result);
}

BusPtr OpenConnection(int& result) {
  sd_bus* bus = nullptr;
  result = sd_bus_open_user(&bus);
  return BusPtr(bus);
}

}  // namespace

AppDelegate::AppDelegate() = default;
AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
  forceFTAToThisAppForSuffix("cr");
  if (_respondingToFTA) {
    TerminationEvent::Request();
    return;
  }
  _thisInstanceIsAgent = true;
  ServiceRecordInit();
  DistributedNotificationCenter::defaultCenter().addObserver(kLoggingNotification,
                                                             loggingConfigurationDidChange);
  _beaconServer = NewMrvBeaconService();
  _serviceRecordsServer = NewMrvServiceRecordsServer();
  _beaconsConnection = connectionForService(kBeaconsName);
  _serviceRecordsConnection = connectionForService(kServiceRecordsName);
  if (_serviceRecordsConnection == nullptr || _beaconsConnection == nullptr) std::exit(EXIT_FAILURE);
  ServeConnections();
}

void AppDelegate::ServeConnections() {
  sd_bus& bus = *_serviceRecordsConnection;
  beaconsObject_ = std::make_unique<BeaconsBusObject>(*_beaconServer);
  serviceRecordsObject_ = std::make_unique<ServiceRecordsBusObject>(*_serviceRecordsServer, tasks_);
  applicationObject_ =
      std::make_unique<ApplicationBusObject>([this](const std::string& path) { openFile(path); });
  client_ = std::make_unique<ClientApplication>(bus);
  SetClientActivation([this] { client_->BringForward(); });
  const bool served = beaconsObject_->Serve(*_beaconsConnection) && serviceRecordsObject_->Serve(bus) &&
                      applicationObject_->Serve(bus) &&
                      DistributedNotificationCenter::defaultCenter().Connect(bus) >= 0;
  if (!served) ExitWith("failed to serve the objects of the agent's services");
}

BusPtr AppDelegate::connectionForService(const std::string& name) {
  int result = 0;
  BusPtr connection = OpenConnection(result);
  if (result < 0) ExitWith("failed to create connection for service '" + name + "'");
  result = sd_bus_request_name(connection.get(), name.c_str(), 0);
  if (result < 0) {
    ExitWith("bootstrap_check_in() failed for service '" + name + "'. Error: " + ErrorText(result));
  }
  if (!MainLoop::Main().Attach(*connection))
    ExitWith("failed getting receivePort for service '" + name + "'");
  return connection;
}

bool AppDelegate::openFile(const std::string& path) {
  _respondingToFTA = true;
  if (_thisInstanceIsAgent) {
    tasks_.Start([this, path] { _serviceRecordsServer->handleServiceRecordFTA(path); });
  } else {
    ForwardToAgent(path);
  }
  return true;
}

// A file that cannot be delivered is dropped silently.
void AppDelegate::ForwardToAgent(const std::string& path) {
  int result = 0;
  const BusPtr bus = OpenConnection(result);
  if (result < 0 || !MainLoop::Main().Attach(*bus)) return;
  bool answered = false;
  const auto handleReply = [](sd_bus_message* /*reply*/, void* flag, sd_bus_error* /*error*/) {
    *static_cast<bool*>(flag) = true;
    return 0;
  };
  sd_bus_message* message = nullptr;
  result =
      sd_bus_message_new_method_call(bus.get(), &message, kServiceRecordsName, "/com/morvane/ServiceRecords",
                                     "com.morvane.MrvServiceRecordsService", "handleServiceRecordFTA");
  const BusMessagePtr call(message);
  if (result >= 0) result = sd_bus_message_append(message, "s", path.c_str());
  // Without a time-out: the user may take as long as the dialogs are open.
  if (result >= 0)
    result = sd_bus_call_async(bus.get(), nullptr, message, handleReply, &answered, UINT64_MAX);
  if (result >= 0) MainLoop::Main().RunUntil([&answered] { return answered; });
  sd_bus_detach_event(bus.get());
}

bool AppDelegate::forceFTAToThisAppForSuffix(const std::string& suffix) {
  return DesktopIntegration::BecomeDefaultHandler(suffix);
}

void AppDelegate::applicationWillTerminate() {
  DistributedNotificationCenter::defaultCenter().removeObserver(kLoggingNotification);
}

void AppDelegate::loggingConfigurationDidChange() {
  ServiceRecordUpdateLoggingFromPrefs();
}

void AppDelegate::Finish(int status) {
  if (!tasks_.WaitForAll(kTimeToFinish)) {
    // Inside the lock no save is under way, and none will begin before the process is gone.
    ServiceRecords::SRProvider::Instance().WhileLocked([status] { ::_exit(status); });
  }
  SetClientActivation(nullptr);
  DistributedNotificationCenter::defaultCenter().Disconnect();
}
