#include "desktop/ScreenReader.h"

#include <chrono>
#include <optional>
#include <stdexcept>
#include <tuple>

// Values that come together ("(...)").
template <class... Types>
struct Bus::Codec<std::tuple<Types...>> {
  static std::string Signature() { return "(" + SignatureOf<Types...>() + ")"; }
  [[nodiscard]] static int Read(sd_bus_message* message, std::tuple<Types...>& values) {
    int result = Container::Enter(message, 'r', SignatureOf<Types...>());
    if (result >= 0) result = ReadAll(message, values);
    return result < 0 ? result : Container::Exit(message);
  }
};

namespace TestSupport {

namespace {

using Clock = std::chrono::steady_clock;

constexpr char kAccessible[] = "org.a11y.atspi.Accessible";
constexpr char kRoot[] = "/org/a11y/atspi/accessible/root";
constexpr std::chrono::seconds kWaitLimit{30};
// Not every change of a window is announced.
constexpr std::chrono::milliseconds kLookAgain{50};

template <class Value>
Value Had(Bus::Result<Value> result, const std::string& what) {
  if (!result) throw std::runtime_error(what + ": " + result.Failure().text);
  return std::move(*result);
}

std::string AddressOfAccessibilityBus(const std::string& sessionBus) {
  constexpr Bus::Service kBus{"org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus"};
  Bus::Connection session = Had(Bus::Connection::To(sessionBus), "the session bus");
  return Had(session.Call<std::string>(kBus, {}, "GetAddress"), "the accessibility bus");
}

std::string TextIn(const PropertyList::Dictionary& properties, const char* name) {
  const PropertyList::Value* const value = properties.Find(name);
  const auto* const text = value != nullptr ? value->As<std::string>() : nullptr;
  return text != nullptr ? *text : std::string();
}

std::optional<Control> Found(const std::vector<Control>& controls, Role role, const std::string& name) {
  for (const Control& control : controls) {
    if (control.role == role && control.name == name) return control;
  }
  return std::nullopt;
}

}  // namespace

ScreenReader::ScreenReader(const std::string& sessionBus)
    : bus_(Had(Bus::Connection::To(AddressOfAccessibilityBus(sessionBus)), "the accessibility bus")),
      changes_(Had(bus_.Match("type='signal',interface='org.a11y.atspi.Event.Object',member='StateChanged'",
                              [this](const Bus::Message& signal) { NoteChange(signal); }),
                   "watching states")) {
  // Programs tell only what somebody has registered for.
  const Place registry{"org.a11y.atspi.Registry", "/org/a11y/atspi/registry"};
  Had(Call<>(registry, "org.a11y.atspi.Registry", "RegisterEvent", std::string("object:state-changed"),
             std::vector<std::string>(), std::string()),
      "the accessibility registry");
}

void ScreenReader::NoteChange(const Bus::Message& signal) {
  const auto change = signal.Read<std::string, std::int32_t>();
  if (!change || std::get<0>(*change) != "sensitive" || std::get<1>(*change) == 0) return;
  becameSensitive_.emplace(signal.Sender(), sd_bus_message_get_path(signal.Get()));
}

template <class... Results, class... Arguments>
Bus::Result<Bus::Reading<Results...>> ScreenReader::Call(const Place& place, const char* interface,
                                                         const char* method, const Arguments&... arguments) {
  return bus_.Call<Results...>({place.first.c_str(), place.second.c_str(), interface},
                               {.timeOut = kWaitLimit}, method, arguments...);
}

std::vector<ScreenReader::Place> ScreenReader::ChildrenOf(const Place& place) {
  std::vector<Place> children;
  const auto told =
      Call<std::vector<std::tuple<std::string, Bus::ObjectPath>>>(place, kAccessible, "GetChildren");
  if (!told) return children;
  for (const auto& [program, path] : *told) children.emplace_back(program, path.text);
  return children;
}

bool ScreenReader::Describe(const Place& place, Control& control) {
  const auto role = Call<std::uint32_t>(place, kAccessible, "GetRole");
  const auto states = Call<std::vector<std::uint32_t>>(place, kAccessible, "GetState");
  const auto texts = Call<PropertyList::Dictionary>(place, "org.freedesktop.DBus.Properties", "GetAll",
                                                    std::string(kAccessible));
  if (!role || !states || !texts) return false;
  control.program = place.first;
  control.path = place.second;
  control.role = static_cast<Role>(*role);
  control.name = TextIn(*texts, "Name");
  control.description = TextIn(*texts, "Description");
  control.states = states->at(0) | std::uint64_t{states->at(1)} << 32U;
  return true;
}

// The states of a page of a stack do not tell whether it is shown.
bool ScreenReader::HasPlaceInWindow(const Place& place) {
  constexpr std::uint32_t kOfWindow = 1;
  using Extents =
      std::tuple<std::int32_t, std::int32_t, std::int32_t, std::int32_t>;  // width and height last
  const auto extents = Call<Extents>(place, "org.a11y.atspi.Component", "GetExtents", kOfWindow);
  return !extents || std::get<2>(*extents) > 0 || std::get<3>(*extents) > 0;
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
  while (Had(bus_.Process(), "the accessibility bus")) {
  }
}

void ScreenReader::AwaitChange() {
  TakeChanges();
  static_cast<void>(bus_.Wait(kLookAgain));
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
  return Had(
      Call<bool>({control.program, control.path}, "org.a11y.atspi.Action", "DoAction", std::int32_t{0}),
      control.name + " cannot be pressed");
}

bool ScreenReader::HasBecomeSensitive(const Control& control) {
  TakeChanges();
  return becameSensitive_.contains({control.program, control.path});
}

}  // namespace TestSupport
