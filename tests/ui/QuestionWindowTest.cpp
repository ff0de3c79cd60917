#include "Shared/Signals.h"
#include "ui/DialogWindowTest.h"
#include "window/TrustWindow.h"

#include <chrono>
#include <thread>

namespace {

using std::chrono::steady_clock;
using namespace std::chrono_literals;

using QuestionWindowTest = DialogWindowTest;

// On a machine so busy that the window is not drawn in the half second after it is on the screen.
TEST_F(QuestionWindowTest, CountsItsHalfSecondFromWhatCanBeSeen) {
  const Dialogs::TrustWindow window({{"StoreName", "One"}}, [](bool /*accepted*/) {});
  GtkWidget* const accept = window.Get("accept");
  window.Present();
  ASSERT_NE(gtk_widget_get_mapped(window.Get("window")), FALSE);
  std::this_thread::sleep_for(600ms);

  bool isDrawn = false;
  bool wasSensitive = false;
  // Taken before the window learns of its first frame, whatever comes between.
  steady_clock::time_point firstFrame;
  GdkFrameClock* const clock = gtk_widget_get_frame_clock(window.Get("window"));
  Windows::Signals::Connect(clock, "before-paint", [&] {
    if (!isDrawn) firstFrame = steady_clock::now();
  });
  Windows::Signals::Connect(clock, "after-paint", [&] {
    if (isDrawn) return;
    isDrawn = true;
    wasSensitive = gtk_widget_get_sensitive(accept) != FALSE;
  });
  RunUntil([&] { return isDrawn; });
  EXPECT_FALSE(wasSensitive);
  AwaitAcceptable(window);
  EXPECT_GE(steady_clock::now() - firstFrame, 499ms);  // the toolkit's clock counts milliseconds
}

}  // namespace
