#include <gtest/gtest.h>

#include <cstdlib>

namespace {

// Every case reaches its servers directly and reads English messages.
class NetworkEnvironment : public testing::Environment {
 public:
  void SetUp() override {
    for (const char* variable :
         {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"}) {
      ::unsetenv(variable);
    }
    ::unsetenv("LANGUAGE");
    ::setenv("LC_ALL", "en_US.UTF-8", 1);
  }
};

const testing::Environment* const g_environment = testing::AddGlobalTestEnvironment(new NetworkEnvironment);

}  // namespace
