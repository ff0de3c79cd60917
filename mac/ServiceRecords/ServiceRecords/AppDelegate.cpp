#include "AppDelegate.h"

#include "Bus/ApplicationBusObject.h"
#include "Bus/BeaconsBusObject.h"
#include "Bus/DistributedNotificationCenter.h"
#include "Bus/OpeningsBusObject.h"
#include "Bus/ServiceRecordsBusObject.h"
#include "DbgTrace.h"
#include "MRVServiceRecordsSvr.h"
#include "MrvBeaconSvr.h"
#include "Process/ChangeQueue.h"
#include "Process/ClientApplication.h"
#include "Process/DesktopNotifications.h"
#include "Process/FileOpenings.h"
#include "Process/MainLoop.h"
#include "Process/SessionDesktop.h"
#include "ResourceKeeper.h"
#include "SRLib/SRProvider.h"
#include "ServiceRecordMain.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Desktop/DesktopIntegration.h"
#include "libs/Termination/TerminationEvent.h"
#include "libs/Trace/SystemLog.h"
#include "libs/Warden_SDK/MorvaneWarden.h"
#include "libs/Wayfinder/Wayfinder.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <utility>

using ServiceRecords::ListChange;
using ServiceRecords::Opening;

namespace {

// The rest of the time that the process has to end is for the last notifications and replies.
constexpr std::chrono::seconds kTimeToFinish{4};

constexpr Bus::Service kAgent{Bus::ServiceNames::kServiceRecords, Bus::ServiceNames::kServiceRecordsPath,
                              Bus::ServiceNames::kServiceRecordsInterface};

// A session that ends takes the bus along, which is no failure.
[[noreturn]] void ExitWith(const std::string& line) {
  trace::SystemLog::Error(line);
  std::exit(Termination::Requested() ? EXIT_SUCCESS : EXIT_FAILURE);
}

[[noreturn]] void ExitWithoutName(const std::string& name, const Bus::Error& error) {
  const std::string text = error.code == EEXIST ? "the name has another owner" : error.text;
  ExitWith("bootstrap_check_in() failed for service '" + name + "'. Error: " + text);
}

// Null when there is no session bus.
std::unique_ptr<Bus::Connection> OpenConnection() {
  Bus::Result<Bus::Connection> bus = Bus::Connection::ToUserBus();
  return bus ? std::make_unique<Bus::Connection>(std::move(*bus)) : nullptr;
}

// A program that the bus of a terminal's own session has started would be stopped for reading from a terminal
// that it is to ask on. The leader of a group, such as a shell's own command, stays where it is.
void LeaveSession() {
  static_cast<void>(::setsid());
}

void TryAgain() {
  ServiceRecords::SRProvider::Instance().TryAgain();
}

bool IsUnasked(const Opening& opening) {
  const std::vector<Opening::Store> stores = opening.Stores();
  return std::ranges::any_of(
      stores, [](const Opening::Store& store) { return store.outcome == Openings::Outcome::CouldNotAsk; });
}

// Whoever did not say where his desktop is means the user's: a double click comes from it without a word, and
// this agent may have been started before it, or on an earlier one.
void AskWhereTheUserIs() {
  const Opening::Origin& origin = Opening::OfThisThread()->GetOrigin();
  if (origin.terminalDescriptor < 0 && origin.desktop.empty()) Opening::AskOn(Agent::SessionDesktop());
}

void SaveWhatIsUnsaved() {
  ServiceRecords::SRProvider::Instance().SaveWhatIsUnsaved();
}

}  // namespace

AppDelegate::AppDelegate() = default;
AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
  forceFTAToThisAppForSuffix("cr");
  if (_respondingToFTA) {
    Termination::Request();
    return;
  }
  _thisInstanceIsAgent = true;
  LeaveSession();
  // NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks): who exits on the way leaves them to the system.
  std::unique_ptr<Bus::Connection> notifications = OpenConnection();
  LookAtNames(notifications.get());
  changes_ = std::make_unique<Agent::ChangeQueue>(Termination::Requested, SaveWhatIsUnsaved);
  ServiceRecordInit();
  RetryInBackground();
  // Observed before either name is published, so that no notification is missed from then on.
  ObserveLoggingConfiguration(notifications.get());
  _beaconServer.reset(NewMrvBeaconService());
  _serviceRecordsServer.reset(NewMrvServiceRecordsServer());
  _beaconsConnection = connectionForService(Bus::ServiceNames::kBeacons, OpenConnection());
  _serviceRecordsConnection =
      connectionForService(Bus::ServiceNames::kServiceRecords, std::move(notifications));
  // NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)
  ServeConnections();
}

// An agent that would end without its names must leave the other one's log and stores alone. Whoever takes a
// name after this look loses it at the check-in, and the log to its lock.
void AppDelegate::LookAtNames(Bus::Connection* bus) {
  for (const char* name : {Bus::ServiceNames::kBeacons, Bus::ServiceNames::kServiceRecords}) {
    if (bus != nullptr && bus->HasOwner(name)) ExitWithoutName(name, Bus::Error::OfResult(-EEXIST));
  }
}

// A try changes the list or its file, so it takes its turn among the changes. A list that could be
// read at last is announced: until then it was empty for everybody.
void AppDelegate::RetryInBackground() {
  ServiceRecords::SRProvider::Instance().RetryWith(
      [this](std::chrono::seconds delay) {
        Agent::MainLoop::Main().PutOff(delay, [this] { changes_->Add(TryAgain); });
      },
      Agent::AnnounceStores);
}

void AppDelegate::ObserveLoggingConfiguration(Bus::Connection* connection) {
  Agent::DistributedNotificationCenter& center = Agent::DistributedNotificationCenter::defaultCenter();
  center.addObserver(Bus::ServiceNames::kLoggingNotification, loggingConfigurationDidChange);
  if (connection != nullptr && !center.Connect(*connection)) ExitWith("failed to observe notifications");
}

void AppDelegate::ServeConnections() {
  Bus::Connection& bus = *_serviceRecordsConnection;
  notifications_ = std::make_unique<Agent::DesktopNotifications>(bus, util::MessageFromResourceW);
  client_ = std::make_unique<Agent::ClientApplication>(bus);
  Agent::SetClientActivation(
      [this](const std::vector<Opening::Store>& accepted, const Display::Variables& desktop) {
        client_->BringForward(desktop, [this, accepted] { notifications_->TellAccepted(accepted); });
      });
  openings_ = std::make_unique<Agent::FileOpenings>(
      tasks_,
      [this](const std::string& path) {
        AskWhereTheUserIs();
        _serviceRecordsServer->handleServiceRecordFTA(path);
      },
      [this](const Opening& opening) { TellIfUnreadOrUnasked(opening); });
  if (!ServeObjects()) ExitWith("failed to serve the objects of the agent's services");
}

bool AppDelegate::ServeObjects() {
  Bus::Connection& bus = *_serviceRecordsConnection;
  beaconsObject_ = std::make_unique<Agent::BeaconsBusObject>(*_beaconServer);
  serviceRecordsObject_ =
      std::make_unique<Agent::ServiceRecordsBusObject>(*_serviceRecordsServer, *openings_, *changes_);
  applicationObject_ = std::make_unique<Agent::ApplicationBusObject>(
      [this](const std::string& path) { openFile(path); },
      [this](const std::string& path) { notifications_->TellUnusableName(path); });
  openingsObject_ = std::make_unique<Agent::OpeningsBusObject>(bus, *openings_);
  Agent::SetChangeAnnouncement(
      [this](const std::vector<ListChange>& changes) { openingsObject_->AnnounceChanges(changes); });
  return beaconsObject_->Serve(*_beaconsConnection) && serviceRecordsObject_->Serve(bus) &&
         applicationObject_->Serve(bus) && openingsObject_->Serve();
}

void AppDelegate::TellIfUnreadOrUnasked(const Opening& opening) {
  const std::string& path = opening.GetOrigin().path;
  if (opening.IsUnread()) {
    trace::SystemLog::Error("\"" + path + "\" was not opened: the file cannot be read");
    notifications_->TellUnread(path);
  } else if (IsUnasked(opening)) {
    trace::SystemLog::Error(
        "\"" + path +
        "\" was not opened: nobody could be asked about its stores; srctl doctor says what is missing");
    notifications_->TellUnasked(path);
  }
}

std::unique_ptr<Bus::Connection> AppDelegate::connectionForService(
    const std::string& name, std::unique_ptr<Bus::Connection> connection) {
  if (connection == nullptr) ExitWith("failed to create connection for service '" + name + "'");
  const Bus::Result<> named = connection->RequestName(name);
  if (!named) ExitWithoutName(name, named.Failure());
  if (!Agent::MainLoop::Main().Attach(*connection)) {
    ExitWith("failed getting receivePort for service '" + name + "'");
  }
  return connection;
}

bool AppDelegate::openFile(const std::string& path) {
  _respondingToFTA = true;
  if (_thisInstanceIsAgent) {
    openings_->Start({.path = path});
  } else {
    ForwardToAgent(path);
  }
  return true;
}

// A file that cannot be delivered is dropped silently.
void AppDelegate::ForwardToAgent(const std::string& path) {
  const auto bus = OpenConnection();
  if (bus == nullptr || !Agent::MainLoop::Main().Attach(*bus)) return;
  bool answered = false;
  // Without a time-out: the user may take as long as the dialogs are open.
  const Bus::Result<Bus::Slot> call = bus->CallAsync(
      kAgent, {.timeOut = Bus::kForEver}, "handleServiceRecordFTA",
      [&answered](const Bus::Result<Bus::Message>& /*reply*/) { answered = true; }, path);
  if (call) Agent::MainLoop::Main().RunUntil([&answered] { return answered; });
  bus->Detach();  // the loop goes on, and its end is not this connection's
}

bool AppDelegate::forceFTAToThisAppForSuffix(const std::string& suffix) {
  return Desktop::BecomeDefaultHandler(suffix);
}

void AppDelegate::applicationWillTerminate() {
  Agent::DistributedNotificationCenter::defaultCenter().removeObserver(
      Bus::ServiceNames::kLoggingNotification);
}

void AppDelegate::loggingConfigurationDidChange() {
  ServiceRecordUpdateLoggingFromPrefs();
}

void AppDelegate::Finish(int status) {
  Termination::Request();  // also when the loop ended for another reason: a lost bus
  MorvaneWarden_CancelRequests();
  Agent::SetClientActivation(nullptr);
  WFSetLocationFunc(nullptr);
  const bool allEnded = FinishWork();
  SayLastWords();
  if (!allEnded) ServiceRecords::SRProvider::WhileNotSaving([status] { ::_exit(status); });
  Agent::DistributedNotificationCenter::defaultCenter().Disconnect();
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
  Agent::MainLoop::Main().RunPosted();
  Bus::Connection* const connections[] = {_beaconsConnection.get(), _serviceRecordsConnection.get()};
  for (Bus::Connection* const connection : connections) {
    if (connection != nullptr) connection->ProcessArrived();
  }
  while (Agent::MainLoop::Main().RunPosted()) {
  }
  for (Bus::Connection* const connection : connections) {
    if (connection != nullptr) static_cast<void>(connection->Flush());
  }
}
