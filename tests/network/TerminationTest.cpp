#include "MacSRHTTPRequest.h"
#include "MacSSLValidation.h"
#include "SRLib/SSLValidationDetails.h"
#include "TerminationEvent.h"
#include "network/RawServer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds kQuickly{10};

// Termination cannot be taken back, so each of these runs in a process of its own.
[[noreturn]] void SendUntilTerminated() {
  const testsupport::RawServer server(TerminationEvent::Request);
  ServiceRecords::MacSRHTTPRequest request(server.Address() + L"/discovery");
  const auto start = steady_clock::now();
  const bool ended = !request.SendHTTPRequest(L"") && request.GetStatus() == 0;
  std::_Exit(ended && steady_clock::now() - start < kQuickly ? 0 : 1);
}

[[noreturn]] void ValidateUntilTerminated() {
  const testsupport::RawServer server(TerminationEvent::Request);
  ServiceRecords::MacSSLValidation validation(server.Address());
  ServiceRecords::SSLValidationDetails details;
  const auto start = steady_clock::now();
  const bool ended = !validation.ValidateURL(details) && details.Result == 1;
  std::_Exit(ended && steady_clock::now() - start < kQuickly ? 0 : 1);
}

class TerminationDeathTest : public testing::Test {
 protected:
  void SetUp() override { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

TEST_F(TerminationDeathTest, EndsARequestThatWaitsForItsServer) {
  EXPECT_EXIT(SendUntilTerminated(), testing::ExitedWithCode(0), "");
}

TEST_F(TerminationDeathTest, EndsAValidationThatWaitsForItsServer) {
  EXPECT_EXIT(ValidateUntilTerminated(), testing::ExitedWithCode(0), "");
}

}  // namespace
