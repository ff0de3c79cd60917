#pragma once

#include "desktop/ScreenReader.h"
#include "support/AgentTest.h"
#include "support/VirtualScreen.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace TestSupport {

// A graphical session of one user, in which the shipped windows ask and show. The agent is not started yet.
class DesktopTest : public AgentTest {
 protected:
  // `screen`: the environment that programs need to show their windows, as NAME=value.
  explicit DesktopTest(const std::vector<std::string>& screen);

  // Starts the agent so that its output is what it and its dialogs complain of, too.
  void StartAgent() { agent_.Start({}, {.captureErrors = true}); }
  // Hands the file to the agent; AwaitHandled waits until it has been handled, with all that was asked.
  void BeginToOpen(const std::string& file);
  void AwaitHandled();

  // Adds the store to the list, with everybody's consent.
  void Hold(const StoreText& store);
  // `environment`: added to that of the user's programs.
  [[nodiscard]] ChildProcess StartStoresWindow(const std::vector<std::string>& environment = {});

  [[nodiscard]] ScreenReader& Reader() { return *reader_; }
  // The control, once it can be used.
  Control Usable(Role role, const std::string& name) {
    return Reader().WaitFor(role, name, State::Sensitive);
  }
  // Presses the button as soon as it can be.
  void Press(const std::string& button);
  // How many controls of all windows are such.
  [[nodiscard]] std::ptrdiff_t Count(const std::function<bool(const Control&)>& isSuch);
  // Of all windows, each of which holds some.
  void ExpectEveryControlNamedOnce();
  // Of the programs with that output, which has their standard error.
  static void ExpectNoComplaints(const std::string& output);

 private:
  // What a desktop brings along, and what else uses the agent does not need.
  void InstallDesktop();

  std::unique_ptr<ScreenReader> reader_;
  std::uint64_t opening_ = 0;
};

// What has to be there before the session, and goes after it.
template <class Screen>
struct ScreenBefore {
  Screen screen_;
};

// A session on a screen of the test's own.
template <class Screen>
class DesktopTestOn : protected ScreenBefore<Screen>, public DesktopTest {
 protected:
  DesktopTestOn() : DesktopTest(ScreenBefore<Screen>::screen_.Environment()) {}
};

class VirtualDesktopTest : public DesktopTestOn<VirtualScreen> {
 protected:
  void Type(const std::string& key) const { screen_.Type(key); }
  void Write(const std::string& text) const { screen_.Write(text); }
  void Focus(const std::string& title) const { screen_.Focus(title); }
  // Goes on by the Tab key until the control has the focus.
  void TabTo(Role role, const std::string& name);
};

}  // namespace TestSupport
