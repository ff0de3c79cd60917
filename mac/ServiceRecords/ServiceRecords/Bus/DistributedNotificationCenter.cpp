#include "Bus/DistributedNotificationCenter.h"

#include "Bus/BusMarshalling.h"
#include "Bus/BusObject.h"
#include "Process/MainLoop.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Text/TextHelpers.h"

namespace {

const sd_bus_vtable kSignals[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_SIGNAL_WITH_NAMES("Posted", "ss", SD_BUS_PARAM(name) SD_BUS_PARAM(object), 0), SD_BUS_VTABLE_END};

}  // namespace

DistributedNotificationCenter& DistributedNotificationCenter::defaultCenter() {
  static DistributedNotificationCenter center;
  return center;
}

int DistributedNotificationCenter::Connect(sd_bus& bus) {
  sd_bus_slot* object = nullptr;
  int result = sd_bus_add_object_vtable(&bus, &object, ServiceNames::kNotificationsPath,
                                        ServiceNames::kNotificationsInterface, kSignals, this);
  if (result < 0) return result;
  object_.reset(object);
  bus_ = &bus;
  for (auto& [name, observer] : observers_) {
    if (result = Observe(name, observer); result < 0) return result;
  }
  return 0;
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
  sd_bus_emit_signal(bus_, ServiceNames::kNotificationsPath, ServiceNames::kNotificationsInterface, "Posted",
                     "ss", name.c_str(), BusText(util::widen(object)).c_str());
}

void DistributedNotificationCenter::addObserver(const std::string& name, std::function<void()> handler) {
  Observer& observer = observers_[name];
  observer.handler = std::move(handler);
  if (bus_ != nullptr) Observe(name, observer);
}

void DistributedNotificationCenter::removeObserver(const std::string& name) {
  observers_.erase(name);
}

int DistributedNotificationCenter::Observe(const std::string& name, Observer& observer) {
  const std::string rule = ServiceNames::NotificationMatch(name);
  sd_bus_slot* match = nullptr;
  const int result = sd_bus_add_match(bus_, &match, rule.c_str(), HandleSignal, &observer);
  observer.match.reset(match);
  return result;
}

int DistributedNotificationCenter::HandleSignal(sd_bus_message* /*message*/, void* observer,
                                                sd_bus_error* error) {
  return AnswerCall(error, [observer] {
    const std::function<void()> handler =
        static_cast<Observer*>(observer)->handler;  // which may remove itself
    handler();
    return 0;
  });
}
