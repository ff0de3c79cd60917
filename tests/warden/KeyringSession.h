#pragma once

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <optional>
#include <string>
#include <vector>

namespace TestSupport {

// A session bus of its own with the desktop's keyring on it, unlocked, and the test program's environment
// pointing there. Everything ends with this object.
class KeyringSession {
 public:
  KeyringSession();
  ~KeyringSession();

  static void Lock();
  // Keeps user's secret as another program does, in the collection "default" or the unlocked "session".
  static void Keep(const std::string& collection, const std::string& host, const std::string& realm,
                   const std::string& secret);
  // What is kept for that host, attributes and secrets, as the desktop's own tool lists it.
  [[nodiscard]] static std::string Kept(const std::string& host);

 private:
  [[nodiscard]] static std::string Run(const std::vector<std::string>& command);

  TemporaryFolder folder_;
  std::string address_;
  std::optional<ChildProcess> bus_;
  std::optional<ChildProcess> keyring_;
};

}  // namespace TestSupport
