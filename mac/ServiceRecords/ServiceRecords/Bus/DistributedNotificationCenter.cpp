#include "Bus/DistributedNotificationCenter.h"

#include "Process/MainLoop.h"
#include "libs/Bus/BusText.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Text/TextHelpers.h"

#include <utility>

namespace Agent {

DistributedNotificationCenter& DistributedNotificationCenter::defaultCenter() {
  static DistributedNotificationCenter center;
  return center;
}

Bus::Result<> DistributedNotificationCenter::Connect(Bus::Connection& bus) {
  Bus::Interface interface(Bus::ServiceNames::kNotificationsInterface);
  interface.Signal<std::string, std::string>("Posted", {"name", "object"});
  Bus::Result<Bus::Slot> object = bus.Serve(Bus::ServiceNames::kNotificationsPath, std::move(interface));
  if (!object) return object.Failure();
  object_ = std::move(*object);
  bus_ = &bus;
  for (auto& [name, observer] : observers_) {
    if (const Bus::Result<> observed = Observe(name, observer); !observed) return observed.Failure();
  }
  return Bus::Nothing{};
}

void DistributedNotificationCenter::Disconnect() {
  observers_.clear();
  object_.reset();
  bus_ = nullptr;
}

void DistributedNotificationCenter::postNotificationName(const std::string& name, const std::string& object) {
  if (MainLoop::Main().IsMainThread()) return Send(name, object);
  MainLoop::Main().Post([this, name, object] { Send(name, object); });
}

void DistributedNotificationCenter::Send(const std::string& name, const std::string& object) {
  if (bus_ == nullptr) return;
  static_cast<void>(bus_->Emit(Bus::ServiceNames::kNotificationsPath,
                               Bus::ServiceNames::kNotificationsInterface, "Posted", name,
                               Bus::Text(util::widen(object))));
}

void DistributedNotificationCenter::addObserver(const std::string& name, std::function<void()> handler) {
  Observer& observer = observers_[name];
  observer.handler = std::move(handler);
  if (bus_ != nullptr) static_cast<void>(Observe(name, observer));
}

void DistributedNotificationCenter::removeObserver(const std::string& name) {
  observers_.erase(name);
}

Bus::Result<> DistributedNotificationCenter::Observe(const std::string& name, Observer& observer) {
  return Bus::Keep(observer.match,
                   bus_->Match(Bus::ServiceNames::NotificationMatch(name),
                               [handler = observer.handler](const Bus::Message& /*signal*/) { handler(); }));
}

}  // namespace Agent
