#pragma once

#include "Shared/Adwaita.h"
#include "support/VirtualScreen.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace TestSupport {

// Widgets of ours in a small window of the test's own. A process has the toolkit for one case.
class WidgetTest : public testing::Test {
 protected:
  WidgetTest();
  ~WidgetTest() override;

  // Shows the widget, from then on a part of the window.
  void Present(GtkWidget* widget);
  [[nodiscard]] GtkWindow* Window() const { return window_; }

  // Runs the main loop until then; throws std::runtime_error when it does not come within twenty seconds.
  static void WaitUntil(const std::function<bool()>& condition);
  // Until the window has been drawn anew a few times.
  void WaitForFrames() const;

  // What of the window is such, from the top.
  [[nodiscard]] std::vector<GtkWidget*> All(const std::function<bool(GtkWidget*)>& isSuch) const {
    return AllOf(GTK_WIDGET(window_), isSuch);
  }
  [[nodiscard]] static std::vector<GtkWidget*> AllOf(GtkWidget* top,
                                                     const std::function<bool(GtkWidget*)>& isSuch);

 private:
  VirtualScreen screen_;
  GtkWindow* window_ = nullptr;
};

}  // namespace TestSupport
