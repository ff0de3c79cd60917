#pragma once

#include <memory>
#include <string>

namespace TestSupport {

// The clipboard manager of a screen, which is asked to take over what programs have copied and never does.
// One thread.
class SilentClipboardManager {
 public:
  // Throws std::runtime_error where there is no such display.
  explicit SilentClipboardManager(const std::string& display);
  ~SilentClipboardManager();

  // Whether a program has copied anything.
  [[nodiscard]] bool IsAnythingCopied() const;
  // Whether one has asked since.
  [[nodiscard]] bool IsAsked();

 private:
  struct Connection;
  std::unique_ptr<Connection> connection_;
  bool isAsked_ = false;
};

}  // namespace TestSupport
