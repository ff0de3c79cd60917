#include "support/ServiceManager.h"

#include "libs/Bus/Connection.h"
#include "libs/Bus/EventLoop.h"

#include <exception>
#include <stdexcept>
#include <utility>

namespace TestSupport {
namespace {

constexpr char kName[] = "org.freedesktop.systemd1";
constexpr char kPath[] = "/org/freedesktop/systemd1";

void Require(bool succeeded) {
  if (!succeeded) throw std::runtime_error("the service manager cannot be served");
}

}  // namespace

ServiceManager::ServiceManager(const std::string& address, const std::vector<std::string>& environment,
                               std::chrono::milliseconds pause)
    : thread_([this, address, environment, pause] {
        try {
          Serve(address, environment, pause);
        } catch (...) {
          isServed_.set_exception(std::current_exception());
        }
      }) {
  try {
    isServed_.get_future().get();
  } catch (...) {
    thread_.join();
    throw;
  }
}

ServiceManager::~ServiceManager() {
  end_.Raise();
  thread_.join();
}

void ServiceManager::Serve(const std::string& address, const std::vector<std::string>& environment,
                           std::chrono::milliseconds pause) {
  Bus::EventLoop loop = std::move(*Bus::EventLoop::Make());
  Bus::Connection bus = std::move(*Bus::Connection::To(address));
  Bus::Interface interface("org.freedesktop.systemd1.Manager");
  interface.Property("Environment", [environment, pause] {
    std::this_thread::sleep_for(pause);
    return environment;
  });
  Bus::Slot object;
  Require(static_cast<bool>(Bus::Keep(object, bus.Serve(kPath, std::move(interface)))));
  Require(static_cast<bool>(bus.RequestName(kName)));
  Require(static_cast<bool>(bus.Attach(loop)));
  const auto end = loop.WatchReadable(end_.Descriptor(), [&loop] { loop.End(); });
  Require(static_cast<bool>(end));
  isServed_.set_value();
  static_cast<void>(loop.Run());
  bus.Detach();
}

}  // namespace TestSupport
