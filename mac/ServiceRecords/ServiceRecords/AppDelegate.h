#pragma once

#include "Process/BackgroundTasks.h"
#include "SRLib/Provider/Opening.h"
#include "libs/Bus/Connection.h"

#include <memory>
#include <string>

namespace Agent {
class ApplicationBusObject;
class BeaconsBusObject;
class ChangeQueue;
class ClientApplication;
class DesktopNotifications;
class FileOpenings;
class OpeningsBusObject;
class ServiceRecordsBusObject;
}  // namespace Agent
class MrvBeaconSvr;
class MrvServiceRecordsSvr;

// The life of the process: an instance started only to deliver a file forwards it and ends; any other becomes
// the agent and serves both names until it is terminated. Main thread.
class AppDelegate {
 public:
  AppDelegate();
  ~AppDelegate();
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  // A file-open event with an absolute path. Always true.
  bool openFile(const std::string& path);
  // Ends the process with status 1 when a service cannot be published.
  void applicationDidFinishLaunching();
  void applicationWillTerminate();

  // Waits for the files being handled and the change being made, says the last words and lets go of the
  // services. When a thread is still busy after the time allowed, ends the process with this exit status as
  // soon as no save is under way.
  void Finish(int status);

 private:
  // Publishes the name on the connection, which serves it from then on. Ends the process with status 1 on
  // failure.
  [[nodiscard]] static std::unique_ptr<Bus::Connection> connectionForService(
      const std::string& name, std::unique_ptr<Bus::Connection> connection);
  // Makes this application the default handler of the suffix.
  static bool forceFTAToThisAppForSuffix(const std::string& suffix);
  static void loggingConfigurationDidChange();
  static void ForwardToAgent(const std::string& path);
  // Ends the process with status 1 when a name of the agent has an owner.
  static void LookAtNames(Bus::Connection* bus);

  static void ObserveLoggingConfiguration(Bus::Connection* connection);
  void ServeConnections();
  [[nodiscard]] bool ServeObjects();
  // What no dialog says.
  void TellIfUnreadOrUnasked(const ServiceRecords::Opening& opening);
  void RetryInBackground();
  [[nodiscard]] bool FinishWork();
  void SayLastWords();

  // Let go in the reverse order: objects before the connections that serve them, those before the servers.
  Agent::BackgroundTasks tasks_;
  std::unique_ptr<Agent::ChangeQueue> changes_;  // the agent's only
  std::unique_ptr<MrvServiceRecordsSvr> _serviceRecordsServer;
  std::unique_ptr<MrvBeaconSvr> _beaconServer;
  std::unique_ptr<Bus::Connection> _serviceRecordsConnection;
  std::unique_ptr<Bus::Connection> _beaconsConnection;
  std::unique_ptr<Agent::BeaconsBusObject> beaconsObject_;
  std::unique_ptr<Agent::ServiceRecordsBusObject> serviceRecordsObject_;
  std::unique_ptr<Agent::ApplicationBusObject> applicationObject_;
  std::unique_ptr<Agent::OpeningsBusObject> openingsObject_;
  std::unique_ptr<Agent::FileOpenings> openings_;
  std::unique_ptr<Agent::ClientApplication> client_;
  std::unique_ptr<Agent::DesktopNotifications> notifications_;
  bool _respondingToFTA = false;
  bool _thisInstanceIsAgent = false;
};
