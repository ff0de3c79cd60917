#pragma once

#include "Shared/Gtk.h"
#include "support/VirtualScreen.h"
#include "window/DialogWindow.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

// The dialogs' windows in this process, on a screen of the test's own. A process has the toolkit for one
// case.
class DialogWindowTest : public testing::Test {
 protected:
  DialogWindowTest();

  // Runs the main loop until then; throws std::runtime_error when it does not come within thirty seconds.
  static void RunUntil(const std::function<bool()>& condition);
  // Until the button of the question can be pressed.
  static void AwaitAcceptable(const Dialogs::DialogWindow& window);

  // What the labels inside say, from the top.
  [[nodiscard]] static std::vector<std::string> TextsOf(GtkWidget* widget);

  TestSupport::VirtualScreen screen_;
};
