#include "MacSRHTTPRequest.h"
#include "MacSSLValidation.h"
#include "SRLib/Platform/SSLValidationDetails.h"
#include "libs/Termination/TerminationEvent.h"
#include "support/RawServer.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>

namespace {

// Before any other limit of a request would end it.
constexpr unsigned int kHangsSeconds = 25;

// Termination cannot be taken back, so each of these runs in a process of its own.
[[noreturn]] void SendUntilTerminated() {
  const TestSupport::RawServer server(Termination::Request);
  ServiceRecords::MacSRHTTPRequest request(server.Address() + L"/discovery");
  ::alarm(kHangsSeconds);
  const bool ended = !request.SendHTTPRequest(L"") && request.GetStatus() == 0;
  std::_Exit(ended ? 0 : 1);
}

[[noreturn]] void ValidateUntilTerminated() {
  const TestSupport::RawServer server(Termination::Request);
  ServiceRecords::MacSSLValidation validation(server.Address());
  ServiceRecords::SSLValidationDetails details;
  ::alarm(kHangsSeconds);
  const bool ended = !validation.ValidateURL(details) && details.Result == 1;
  std::_Exit(ended ? 0 : 1);
}

[[noreturn]] void ValidateUntilTerminatedInTheHandshake() {
  const TestSupport::LoopbackListener listener;
  std::thread server([&listener] {
    const Files::FileDescriptor connection(::accept(listener.socket.Get(), nullptr, nullptr));
    char first = 0;
    ::recv(connection.Get(), &first, 1, 0);
    Termination::Request();
    ::pause();
  });
  ServiceRecords::MacSSLValidation validation(L"https://127.0.0.1:" + std::to_wstring(listener.port));
  ServiceRecords::SSLValidationDetails details;
  ::alarm(kHangsSeconds);
  const bool ended = !validation.ValidateURL(details) && details.Result == 1;
  std::_Exit(ended && Termination::Requested() ? 0 : 1);
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

TEST_F(TerminationDeathTest, EndsAValidationWhoseServerDoesNotShakeHands) {
  EXPECT_EXIT(ValidateUntilTerminatedInTheHandshake(), testing::ExitedWithCode(0), "");
}

}  // namespace
