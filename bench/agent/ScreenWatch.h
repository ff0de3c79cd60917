#pragma once

#include <memory>
#include <string>

namespace Bench {

// Sees what appears on an X screen that shows nothing but black. One thread.
class ScreenWatch {
 public:
  // `display`: its name (":1"). Throws std::runtime_error when it cannot be reached.
  explicit ScreenWatch(const std::string& display);
  ~ScreenWatch();
  ScreenWatch(const ScreenWatch&) = delete;
  ScreenWatch& operator=(const ScreenWatch&) = delete;

  // Returns when a further window has appeared and painted its middle. Throws std::runtime_error when none
  // does.
  void WaitForFrame();
  // Asks the last one to close, as its frame's button would.
  void CloseWindow();

 private:
  struct Screen;

  const std::unique_ptr<Screen> screen_;
};

}  // namespace Bench
