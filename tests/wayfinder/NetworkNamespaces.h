#pragma once

#include "libs/Files/FileDescriptor.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace TestSupport {

// A case with two network namespaces of its own: it runs in the near one, which begins with nothing but a
// loopback link, and the far one is the world. Skipped, with the reason, where the machine has none to give.
class NetworkNamespaces : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Runs ip(8) in the near namespace, or in the far one. Throws std::runtime_error when it fails.
  void IP(const std::vector<std::string>& arguments);
  void FarIP(const std::vector<std::string>& arguments);
  // Whether this kernel makes links of this kind.
  [[nodiscard]] bool HasKind(const std::string& kind);

  // Does something in the far namespace; what it opens there stays there.
  void InFar(const std::function<void()>& action);

  // A link from near0 to far0, with addresses of 10.1.0.0/24 at both ends: .1 here; .2, .3 and .254 there.
  void ConnectByWire();

 private:
  Files::FileDescriptor original_;
  Files::FileDescriptor near_;
  Files::FileDescriptor far_;
};

}  // namespace TestSupport
