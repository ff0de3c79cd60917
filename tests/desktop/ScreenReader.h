#pragma once

#include "libs/Bus/Connection.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

// Numbers of the accessibility bus's interface.
enum class Role : std::uint32_t {
  Alert = 2,
  CheckMenuItem = 8,
  Dialog = 16,
  Filler = 20,
  Frame = 23,
  Label = 29,
  List = 31,
  ListItem = 32,
  PushButton = 43,
  RadioButton = 44,
  ScrollPane = 49,
  Unknown = 67,
  Entry = 79,
  Heading = 83
};
enum class State : unsigned {
  Checked = 4,
  Editable = 7,
  Focusable = 11,
  Focused = 12,
  Sensitive = 24,
  Visible = 30
};

// What the accessibility bus tells of one piece of a window.
struct Control {
  std::string program;  // its name on that bus
  std::string path;
  Role role = Role::Unknown;
  std::string name;
  std::string description;
  std::uint64_t states = 0;

  [[nodiscard]] bool Is(State state) const { return (states >> static_cast<unsigned>(state) & 1U) != 0; }
};

// Sees and uses windows as assistive technologies do, from its creation on. What is waited for and does not
// come within thirty seconds, or cannot be used, throws std::runtime_error. One thread.
class ScreenReader {
 public:
  // Of the windows of the programs on that session bus.
  explicit ScreenReader(const std::string& sessionBus);

  // What all windows hold, each control before those inside it. What never had a place in its window, as the
  // pages that were not shown yet, is left out.
  [[nodiscard]] std::vector<Control> Controls();
  // What the control holds, itself first.
  [[nodiscard]] std::vector<Control> Controls(const Control& top);

  Control WaitFor(Role role, const std::string& name);
  Control WaitFor(Role role, const std::string& name, State state);
  void WaitUntilGone(Role role, const std::string& name);
  void WaitUntil(const std::string& what, const std::function<bool()>& condition);

  // Presses a button, activates a row. False for one that is insensitive.
  bool Press(const Control& control);
  // Whether the control has become sensitive since it is shown.
  [[nodiscard]] bool HasBecomeSensitive(const Control& control);

 private:
  using Place = std::pair<std::string, std::string>;  // program, path

  void NoteChange(const Bus::Message& signal);
  // A failure when the control is gone.
  template <class... Results, class... Arguments>
  Bus::Result<Bus::Reading<Results...>> Call(const Place& place, const char* interface, const char* method,
                                             const Arguments&... arguments);
  std::vector<Place> ChildrenOf(const Place& place);
  bool Describe(const Place& place, Control& control);
  bool HasPlaceInWindow(const Place& place);
  void Append(const Place& place, std::vector<Control>& controls);
  void AppendWindow(const Place& place, std::vector<Control>& controls);
  void TakeChanges();
  void AwaitChange();

  Bus::Connection bus_;
  std::set<Place> becameSensitive_;
  Bus::Slot changes_;
};

}  // namespace TestSupport
