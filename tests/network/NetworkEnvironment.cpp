#include "support/TestAuthority.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

// Every case trusts the test authority, reaches its servers directly and reads English messages.
class NetworkEnvironment : public testing::Environment {
 public:
  void SetUp() override {
    ::setenv("SSL_CERT_FILE", testsupport::TestAuthority::Shared().Root().c_str(), 1);
    for (const char* proxy : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
      ::unsetenv(proxy);
    ::unsetenv("LANGUAGE");
    ::setenv("LC_ALL", "en_US.UTF-8", 1);
  }
};

const testing::Environment* const g_environment = testing::AddGlobalTestEnvironment(new NetworkEnvironment);

}  // namespace
