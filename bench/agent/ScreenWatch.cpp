#include "agent/ScreenWatch.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xdamage.h>
#include <poll.h>

#include <chrono>
#include <stdexcept>

namespace Bench {
namespace {

constexpr std::chrono::seconds kTimeToAppear{20};

struct CloseDisplay {
  void operator()(Display* display) const { XCloseDisplay(display); }
};

struct DestroyImage {
  // A macro that calls what the image brings along.
  void operator()(XImage* image) const { XDestroyImage(image); }
};

}  // namespace

struct ScreenWatch::Screen {
  explicit Screen(const std::string& name) : display(XOpenDisplay(name.c_str())) {
    int errors = 0;
    if (display == nullptr || XDamageQueryExtension(display.get(), &damage, &errors) == False) {
      throw std::runtime_error("no screen " + name);
    }
    XSelectInput(display.get(), XDefaultRootWindow(display.get()), SubstructureNotifyMask);
    XSync(display.get(), False);
  }

  // The next thing that happened.
  XEvent Next() {
    XFlush(display.get());
    pollfd connection{XConnectionNumber(display.get()), POLLIN, 0};
    const auto limit = std::chrono::duration_cast<std::chrono::milliseconds>(kTimeToAppear);
    if (XPending(display.get()) == 0 && ::poll(&connection, 1, static_cast<int>(limit.count())) != 1) {
      throw std::runtime_error("no window appears");
    }
    XEvent event{};
    XNextEvent(display.get(), &event);
    return event;
  }

  void Take(const XEvent& event) {
    if (event.type != MapNotify) return;
    window = event.xmap.window;
    XDamageCreate(display.get(), window, XDamageReportRawRectangles);
  }

  [[nodiscard]] bool IsPainted() const {
    XWindowAttributes attributes{};
    if (window == None || XGetWindowAttributes(display.get(), window, &attributes) == 0) return false;
    const std::unique_ptr<XImage, DestroyImage> middle(XGetImage(
        display.get(), window, attributes.width / 2, attributes.height / 2, 1, 1, kColours, ZPixmap));
    return middle != nullptr && (XGetPixel(middle.get(), 0, 0) & kColours) != 0;
  }

  static constexpr unsigned long kColours = 0xFFFFFF;

  const std::unique_ptr<Display, CloseDisplay> display;
  int damage = 0;
  Window window = None;
};

ScreenWatch::ScreenWatch(const std::string& display) : screen_(std::make_unique<Screen>(display)) {}

ScreenWatch::~ScreenWatch() = default;

void ScreenWatch::WaitForFrame() {
  screen_->window = None;
  while (!screen_->IsPainted()) screen_->Take(screen_->Next());
}

void ScreenWatch::CloseWindow() {
  Display* const display = screen_->display.get();
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.window = screen_->window;
  event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
  XSendEvent(display, screen_->window, False, NoEventMask, &event);
  XFlush(display);
}

}  // namespace Bench
