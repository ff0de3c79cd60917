#pragma once

#include "BackgroundTasks.h"
#include "SdBus.h"

#include <memory>
#include <string>

class ApplicationBusObject;
class BeaconsBusObject;
class ClientApplication;
class MrvBeaconSvr;
class MrvServiceRecordsSvr;
class ServiceRecordsBusObject;

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

  // Waits for the files being handled, then lets go of the services. Ends the process at once, with this exit
  // status, when a thread is still busy after the time allowed.
  void Finish(int status);

 private:
  // A published name and the connection that serves it. Ends the process with status 1 on failure.
  [[nodiscard]] static BusPtr connectionForService(const std::string& name);
  // Makes this application the default handler of the suffix.
  static bool forceFTAToThisAppForSuffix(const std::string& suffix);
  static void loggingConfigurationDidChange();
  static void ForwardToAgent(const std::string& path);

  void ServeConnections();

  // Filled in this order and let go in the reverse one, objects before the connections that serve them.
  BackgroundTasks tasks_;
  std::unique_ptr<MrvBeaconSvr> _beaconServer;
  std::unique_ptr<MrvServiceRecordsSvr> _serviceRecordsServer;
  BusPtr _beaconsConnection;
  BusPtr _serviceRecordsConnection;
  std::unique_ptr<BeaconsBusObject> beaconsObject_;
  std::unique_ptr<ServiceRecordsBusObject> serviceRecordsObject_;
  std::unique_ptr<ApplicationBusObject> applicationObject_;
  std::unique_ptr<ClientApplication> client_;
  bool _respondingToFTA = false;
  bool _thisInstanceIsAgent = false;
};
