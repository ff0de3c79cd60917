#include "AppDelegate.h"

#include "Bus/ApplicationBusObject.h"
#include "Bus/BeaconsBusObject.h"
#include "Bus/BusObject.h"
#include "Bus/DistributedNotificationCenter.h"
#include "Bus/ServiceRecordsBusObject.h"
#include "DbgTrace.h"
#include "MRVServiceRecordsSvr.h"
#include "MrvBeaconSvr.h"
#include "Process/ChangeQueue.h"
#include "Process/ClientApplication.h"
#include "Process/MainLoop.h"
#include "SRLib/SRProvider.h"
#include "ServiceRecordMain.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Desktop/DesktopIntegration.h"
#include "libs/Termination/TerminationEvent.h"
#include "libs/Trace/SystemLog.h"
#include "libs/Warden_SDK/MorvaneWarden.h"
#include "libs/Wayfinder/Wayfinder.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace {

// The rest of the time that the process has to end is for the last notifications and replies.
constexpr std::chrono::seconds kTimeToFinish{4};

// A session that ends takes the bus along, which is no failure.
[[noreturn]] void ExitWith(const std::string& line) {
  SystemLog::Error(line);
  std::exit(TerminationEvent::Requested() ? EXIT_SUCCESS : EXIT_FAILURE);
}

std::string ErrorText(int result) {
  if (result == -EEXIST) return "the name has another owner";
  return std::generic_category().message(-result);
}

[[noreturn]] void ExitWithoutName(const std::string& name, int result) {
  ExitWith("bootstrap_check_in() failed for service '" + name + "'. Error: " + ErrorText(result));
}

// Null when there is no session bus.
BusPtr OpenConnection() {
  sd_bus* bus = nullptr;
  return sd_bus_open_user(&bus) < 0 ? nullptr : BusPtr(bus);
}

// Null when the message cannot be made.
BusMessagePtr NewFileCall(sd_bus& bus, const std::string& path) {
  using namespace ServiceNames;
  sd_bus_message* message = nullptr;
  int result = sd_bus_message_new_method_call(&bus, &message, kServiceRecords, kServiceRecordsPath,
                                              kServiceRecordsInterface, "handleServiceRecordFTA");
  BusMessagePtr call(message);
  if (result >= 0) result = sd_bus_message_append(message, "s", path.c_str());
  return result < 0 ? nullptr : std::move(call);
}

void TryAgain() {
  ServiceRecords::SRProvider::Instance().TryAgain();
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
  BusPtr notifications = OpenConnection();
  LookAtNames(notifications.get());
  changes_ = std::make_unique<ChangeQueue>(TerminationEvent::Requested);
  ServiceRecordInit();
  RetryInBackground();
  // Observed before either name is published, so that no notification is missed from then on.
  ObserveLoggingConfiguration(notifications);
  _beaconServer.reset(NewMrvBeaconService());
  _serviceRecordsServer.reset(NewMrvServiceRecordsServer());
  _beaconsConnection = connectionForService(ServiceNames::kBeacons, OpenConnection());
  _serviceRecordsConnection = connectionForService(ServiceNames::kServiceRecords, std::move(notifications));
  ServeConnections();
}

// An agent that would end without its names must leave the other one's log and stores alone. Whoever takes a
// name after this look loses it at the check-in, and the log to its lock.
void AppDelegate::LookAtNames(sd_bus* bus) {
  for (const char* name : {ServiceNames::kBeacons, ServiceNames::kServiceRecords}) {
    if (bus != nullptr && NameHasOwner(*bus, name)) ExitWithoutName(name, -EEXIST);
  }
}

// A try changes the list or its file, so it takes its turn among the changes. A list that could be
// read at last is announced: until then it was empty for everybody.
void AppDelegate::RetryInBackground() {
  ServiceRecords::SRProvider::Instance().RetryWith(
      [this](std::chrono::seconds delay) {
        MainLoop::Main().PutOff(delay, [this] { changes_->Add(TryAgain); });
      },
      AnnounceStores);
}

void AppDelegate::ObserveLoggingConfiguration(const BusPtr& connection) {
  DistributedNotificationCenter& center = DistributedNotificationCenter::defaultCenter();
  center.addObserver(ServiceNames::kLoggingNotification, loggingConfigurationDidChange);
  if (connection != nullptr && center.Connect(*connection) < 0) ExitWith("failed to observe notifications");
}

void AppDelegate::ServeConnections() {
  sd_bus& bus = *_serviceRecordsConnection;
  beaconsObject_ = std::make_unique<BeaconsBusObject>(*_beaconServer);
  serviceRecordsObject_ =
      std::make_unique<ServiceRecordsBusObject>(*_serviceRecordsServer, tasks_, *changes_);
  applicationObject_ =
      std::make_unique<ApplicationBusObject>([this](const std::string& path) { openFile(path); });
  client_ = std::make_unique<ClientApplication>(bus);
  SetClientActivation([this] { client_->BringForward(); });
  const bool served = beaconsObject_->Serve(*_beaconsConnection) && serviceRecordsObject_->Serve(bus) &&
                      applicationObject_->Serve(bus);
  if (!served) ExitWith("failed to serve the objects of the agent's services");
}

BusPtr AppDelegate::connectionForService(const std::string& name, BusPtr connection) {
  if (connection == nullptr) ExitWith("failed to create connection for service '" + name + "'");
  const int result = sd_bus_request_name(connection.get(), name.c_str(), 0);
  if (result < 0) ExitWithoutName(name, result);
  if (!MainLoop::Main().Attach(*connection)) {
    ExitWith("failed getting receivePort for service '" + name + "'");
  }
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
  const BusPtr bus = OpenConnection();
  if (bus == nullptr || !MainLoop::Main().Attach(*bus)) return;
  bool answered = false;
  const auto handleReply = [](sd_bus_message* /*reply*/, void* flag, sd_bus_error* /*error*/) {
    *static_cast<bool*>(flag) = true;
    return 0;
  };
  const BusMessagePtr call = NewFileCall(*bus, path);
  // Without a time-out: the user may take as long as the dialogs are open.
  if (call != nullptr &&
      sd_bus_call_async(bus.get(), nullptr, call.get(), handleReply, &answered, UINT64_MAX) >= 0) {
    MainLoop::Main().RunUntil([&answered] { return answered; });
  }
  sd_bus_detach_event(bus.get());  // the loop goes on, and its end is not this connection's
}

bool AppDelegate::forceFTAToThisAppForSuffix(const std::string& suffix) {
  return DesktopIntegration::BecomeDefaultHandler(suffix);
}

void AppDelegate::applicationWillTerminate() {
  DistributedNotificationCenter::defaultCenter().removeObserver(ServiceNames::kLoggingNotification);
}

void AppDelegate::loggingConfigurationDidChange() {
  ServiceRecordUpdateLoggingFromPrefs();
}

void AppDelegate::Finish(int status) {
  TerminationEvent::Request();  // also when the loop ended for another reason: a lost bus
  MorvaneWarden_CancelRequests();
  SetClientActivation(nullptr);
  WFSetLocationFunc(nullptr);
  const bool allEnded = FinishWork();
  SayLastWords();
  if (!allEnded) ServiceRecords::SRProvider::WhileNotSaving([status] { ::_exit(status); });
  DistributedNotificationCenter::defaultCenter().Disconnect();
}

bool AppDelegate::FinishWork() {
  const auto end = std::chrono::steady_clock::now() + kTimeToFinish;
  if (changes_ != nullptr) changes_->Close();
  const bool filesEnded = tasks_.Finish(kTimeToFinish);
  if (changes_ == nullptr) return filesEnded;
  const auto left = end - std::chrono::steady_clock::now();
  return changes_->Finish(std::chrono::duration_cast<std::chrono::milliseconds>(left)) && filesEnded;
}

// What the ended threads have left to be sent, and the answers to the calls that came until now: of which one
// may be waiting for the other.
void AppDelegate::SayLastWords() {
  MainLoop::Main().RunPosted();
  sd_bus* const connections[] = {_beaconsConnection.get(), _serviceRecordsConnection.get()};
  for (sd_bus* const connection : connections) {
    if (connection != nullptr) ProcessArrived(*connection);
  }
  while (MainLoop::Main().RunPosted()) {
  }
  for (sd_bus* const connection : connections) {
    if (connection != nullptr) sd_bus_flush(connection);
  }
}
