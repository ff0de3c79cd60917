#include "support/VirtualScreen.h"

#include <cstdlib>
#include <stdexcept>

namespace TestSupport {

// The server writes the number of a free display once it takes connections.
VirtualScreen::VirtualScreen()
    : server_({"Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp"}) {
  const std::string number = server_.WaitForOutput("\n");
  display_ = ":" + number.substr(0, number.find('\n'));
}

void VirtualScreen::ShowOwnWindows() const {
  for (const std::string& variable : Environment()) {
    const std::size_t end = variable.find('=');
    ::setenv(variable.substr(0, end).c_str(), variable.c_str() + end + 1, 1);
  }
  ::setenv("GTK_A11Y", "none", 1);
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
}

void VirtualScreen::Type(const std::string& key) const {
  Use({"key", key});
}

void VirtualScreen::Write(const std::string& text) const {
  Use({"type", text});
}

void VirtualScreen::Focus(const std::string& title) const {
  Use({"search", "--name", title, "windowfocus"});
}

void VirtualScreen::Use(const std::vector<std::string>& actions) const {
  std::vector<std::string> command{"xdotool"};
  command.insert(command.end(), actions.begin(), actions.end());
  ChildProcess typist(command, {"DISPLAY=" + display_});
  if (typist.Wait() != 0) throw std::runtime_error("no keyboard");
}

}  // namespace TestSupport
