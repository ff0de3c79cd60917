#pragma once

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <optional>
#include <string>
#include <vector>

namespace testsupport {

// A session bus of its own with the desktop's keyring on it, unlocked, and the test program's environment
// pointing there. Everything ends with this object.
class KeyringSession {
 public:
  KeyringSession();
  ~KeyringSession();

  static void Lock();
  // What is kept for that host, attributes and secrets, as the desktop's own tool lists it.
  [[nodiscard]] static std::string Kept(const std::string& host);

 private:
  [[nodiscard]] static std::string Run(const std::vector<std::string>& command);

  TemporaryFolder folder_;
  std::string address_;
  std::optional<ChildProcess> bus_;
  std::optional<ChildProcess> keyring_;
};

}  // namespace testsupport
