#include "desktop/ScreenReader.h"

#include "support/BusConnection.h"

#include <chrono>
#include <cstdarg>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace TestSupport {

namespace {

using Clock = std::chrono::steady_clock;

constexpr char kAccessible[] = "org.a11y.atspi.Accessible";
constexpr char kRoot[] = "/org/a11y/atspi/accessible/root";
constexpr std::chrono::seconds kWaitLimit{20};
constexpr std::uint64_t kCallLimit = 20'000'000;  // microseconds
// Not every change of a window is announced.
constexpr std::uint64_t kLookAgain = 50'000;  // microseconds

std::string AddressOfAccessibilityBus(const std::string& sessionBus) {
  const Bus::BusPtr session = ConnectToBus(sessionBus);
  sd_bus_message* reply = nullptr;
  CheckBus(sd_bus_call_method(session.get(), "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress",
                              nullptr, &reply, ""),
           "the accessibility bus");
  const Bus::BusMessagePtr owned(reply);
  const char* address = nullptr;
  CheckBus(sd_bus_message_read(reply, "s", &address), "its address");
  return address;
}

void SkipToText(sd_bus_message* properties, Control& control) {
  const char* property = nullptr;
  if (sd_bus_message_read(properties, "s", &property) < 0) return;
  const std::string_view name = property;
  const char* text = nullptr;
  if (name != "Name" && name != "Description") {
    sd_bus_message_skip(properties, "v");
  } else if (sd_bus_message_read(properties, "v", "s", &text) >= 0) {
    (name == "Name" ? control.name : control.description) = text;
  }
}

void ReadTexts(sd_bus_message* properties, Control& control) {
  if (sd_bus_message_enter_container(properties, 'a', "{sv}") < 0) return;
  while (sd_bus_message_enter_container(properties, 'e', "sv") > 0) {
    SkipToText(properties, control);
    sd_bus_message_exit_container(properties);
  }
}

std::uint64_t ReadStates(sd_bus_message* reply) {
  std::uint32_t low = 0;
  std::uint32_t high = 0;
  CheckBus(sd_bus_message_read(reply, "au", 2, &low, &high), "states");
  return low | std::uint64_t{high} << 32U;
}

std::optional<Control> Found(const std::vector<Control>& controls, Role role, const std::string& name) {
  for (const Control& control : controls) {
    if (control.role == role && control.name == name) return control;
  }
  return std::nullopt;
}

}  // namespace

ScreenReader::ScreenReader(const std::string& sessionBus)
    : bus_(ConnectToBus(AddressOfAccessibilityBus(sessionBus))) {
  CheckBus(sd_bus_add_match(bus_.get(), nullptr,
                            "type='signal',interface='org.a11y.atspi.Event.Object',member='StateChanged'",
                            NoteChange, this),
           "watching states");
  // Programs tell only what somebody has registered for.
  const Place registry{"org.a11y.atspi.Registry", "/org/a11y/atspi/registry"};
  if (!Call(registry, "org.a11y.atspi.Registry", "RegisterEvent", "sass", "object:state-changed", 0, "")) {
    throw std::runtime_error("the accessibility registry does not answer");
  }
}

int ScreenReader::NoteChange(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) {
  const char* state = nullptr;
  std::int32_t isSet = 0;
  if (sd_bus_message_read(signal, "si", &state, &isSet) >= 0 && state == std::string_view("sensitive") &&
      isSet != 0) {
    static_cast<ScreenReader*>(self)->becameSensitive_.emplace(sd_bus_message_get_sender(signal),
                                                               sd_bus_message_get_path(signal));
  }
  return 0;
}

// Nothing when the control is gone.
Bus::BusMessagePtr ScreenReader::Call(const Place& place, const char* interface, const char* method,
                                      const char* types, ...) {
  sd_bus_message* message = nullptr;
  CheckBus(sd_bus_message_new_method_call(bus_.get(), &message, place.first.c_str(), place.second.c_str(),
                                          interface, method),
           method);
  const Bus::BusMessagePtr call(message);
  std::va_list arguments;
  va_start(arguments, types);
  const int appended = sd_bus_message_appendv(message, types, arguments);
  va_end(arguments);
  CheckBus(appended, method);
  sd_bus_message* reply = nullptr;
  if (sd_bus_call(bus_.get(), message, kCallLimit, nullptr, &reply) < 0) return nullptr;
  return Bus::BusMessagePtr(reply);
}

std::vector<ScreenReader::Place> ScreenReader::ChildrenOf(const Place& place) {
  std::vector<Place> children;
  const Bus::BusMessagePtr reply = Call(place, kAccessible, "GetChildren");
  if (!reply || sd_bus_message_enter_container(reply.get(), 'a', "(so)") < 0) return children;
  const char* program = nullptr;
  const char* path = nullptr;
  while (sd_bus_message_read(reply.get(), "(so)", &program, &path) > 0) children.emplace_back(program, path);
  return children;
}

bool ScreenReader::Describe(const Place& place, Control& control) {
  const Bus::BusMessagePtr role = Call(place, kAccessible, "GetRole");
  const Bus::BusMessagePtr states = Call(place, kAccessible, "GetState");
  const Bus::BusMessagePtr texts = Call(place, "org.freedesktop.DBus.Properties", "GetAll", "s", kAccessible);
  std::uint32_t number = 0;
  if (!role || !states || !texts || sd_bus_message_read(role.get(), "u", &number) < 0) return false;
  control.program = place.first;
  control.path = place.second;
  control.role = static_cast<Role>(number);
  control.states = ReadStates(states.get());
  ReadTexts(texts.get(), control);
  return true;
}

// The states of a page of a stack do not tell whether it is shown.
bool ScreenReader::HasPlaceInWindow(const Place& place) {
  constexpr std::uint32_t kOfWindow = 1;
  const Bus::BusMessagePtr reply = Call(place, "org.a11y.atspi.Component", "GetExtents", "u", kOfWindow);
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
  const bool isKnown = reply && sd_bus_message_read(reply.get(), "(iiii)", &x, &y, &width, &height) > 0;
  return !isKnown || width > 0 || height > 0;
}

void ScreenReader::Append(const Place& place, std::vector<Control>& controls) {
  Control control;
  if (!Describe(place, control) || !control.Is(State::Visible) || !HasPlaceInWindow(place)) return;
  controls.push_back(std::move(control));
  for (const Place& child : ChildrenOf(place)) Append(child, controls);
}

// Newer releases of the toolkit tell an alert from another dialog.
void ScreenReader::AppendWindow(const Place& place, std::vector<Control>& controls) {
  const std::size_t window = controls.size();
  Append(place, controls);
  if (window < controls.size() && controls[window].role == Role::Alert) controls[window].role = Role::Dialog;
}

std::vector<Control> ScreenReader::Controls() {
  std::vector<Control> controls;
  for (const Place& program : ChildrenOf({"org.a11y.atspi.Registry", kRoot})) {
    for (const Place& window : ChildrenOf(program)) AppendWindow(window, controls);
  }
  return controls;
}

std::vector<Control> ScreenReader::Controls(const Control& top) {
  std::vector<Control> controls;
  Append({top.program, top.path}, controls);
  return controls;
}

void ScreenReader::TakeChanges() {
  while (sd_bus_process(bus_.get(), nullptr) > 0) {
  }
}

void ScreenReader::AwaitChange() {
  TakeChanges();
  sd_bus_wait(bus_.get(), kLookAgain);
}

void ScreenReader::WaitUntil(const std::string& what, const std::function<bool()>& condition) {
  const Clock::time_point deadline = Clock::now() + kWaitLimit;
  while (!condition()) {
    if (Clock::now() > deadline) throw std::runtime_error("in vain waited for: " + what);
    AwaitChange();
  }
}

Control ScreenReader::WaitFor(Role role, const std::string& name) {
  return WaitFor(role, name, State::Visible);
}

Control ScreenReader::WaitFor(Role role, const std::string& name, State state) {
  std::optional<Control> found;
  WaitUntil(name, [&] {
    found = Found(Controls(), role, name);
    return found && found->Is(state);
  });
  return *found;
}

void ScreenReader::WaitUntilGone(Role role, const std::string& name) {
  WaitUntil("the end of " + name, [&] { return !Found(Controls(), role, name); });
}

bool ScreenReader::Press(const Control& control) {
  const Bus::BusMessagePtr reply =
      Call({control.program, control.path}, "org.a11y.atspi.Action", "DoAction", "i", 0);
  int isDone = 0;
  if (!reply || sd_bus_message_read(reply.get(), "b", &isDone) < 0) {
    throw std::runtime_error(control.name + " cannot be pressed");
  }
  return isDone != 0;
}

bool ScreenReader::HasBecomeSensitive(const Control& control) {
  TakeChanges();
  return becameSensitive_.contains({control.program, control.path});
}

}  // namespace TestSupport
