#include "MacSRHTTPRequest.h"
#include "SRLib/SRTrustedHTTPRequest.h"
#include "libs/Files/FileDescriptor.h"
#include "support/PseudoTerminal.h"
#include "support/RawServer.h"
#include "support/TemporaryFolder.h"
#include "warden/WardenLibrary.h"
#include "warden/WardenRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <future>
#include <latch>

namespace {

using testing::HasSubstr;
using testing::Not;
using TestSupport::PseudoTerminal;
using TestSupport::RawServer;
using TestSupport::WardenLibrary;
using TestSupport::WardenRequest;

bool Answered(const std::wstring& url) {
  std::wstring response;
  bool canceled = false;
  ServiceRecords::MacSRHTTPRequestFactory requests;
  return ServiceRecords::SRTrustedHTTPRequest(requests).MakeRequest({url, {}}, response, canceled);
}

TEST(OverlappingRequests, AServerThatDoesNotAnswerKeepsNobodyElsesRequestWaiting) {
  ServiceRecords::MacSRHTTPRequestFactory::Init();
  std::latch asked(1);
  auto slow = std::make_optional<RawServer>([&] { asked.count_down(); });
  const RawServer healthy({TestSupport::kEmptyAnswer});
  std::future<bool> waiting = std::async(std::launch::async, Answered, slow->Address() + L"/");
  asked.wait();
  std::future<bool> other = std::async(std::launch::async, Answered, healthy.Address() + L"/");
  const bool isDone = other.wait_for(std::chrono::seconds(30)) == std::future_status::ready;
  EXPECT_TRUE(isDone);
  slow.reset();
  EXPECT_FALSE(waiting.get());
  EXPECT_TRUE(other.get());
}

constexpr const char* kIntroduction = "A store asks you to log on";

// Two requests that are challenged at once, the real credential program, and a user at a terminal.
class OverlappingQuestionsTest : public testing::Test {
 protected:
  void SetUp() override {
    ::setenv("SERVICERECORDS_TERMINAL", terminal_.Path().c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", runtime_.Path().c_str(), 1);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    std::ofstream(runtime_.Path() / "servicerecord-dialog.lock");
    const std::string turn = (runtime_.Path() / "servicerecord-dialog.lock").string();
    ASSERT_GE(::inotify_add_watch(turns_.Get(), turn.c_str(), IN_OPEN), 0);
  }

  // A request with a question that waits for its turn, or has got it.
  std::future<std::uint32_t> Challenge() {
    std::future<std::uint32_t> action = std::async(std::launch::async, [this] {
      WardenRequest request(library_, L"https://store.example/");
      EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
      request.Report(401, {L"WWW-Authenticate: Basic realm=\"Stores\""});
      return request.Prepare();
    });
    std::array<char, sizeof(inotify_event)> turnFileOpened;
    EXPECT_EQ(::read(turns_.Get(), turnFileOpened.data(), turnFileOpened.size()),
              static_cast<ssize_t>(turnFileOpened.size()));
    return action;
  }

  TestSupport::TemporaryFolder runtime_;
  const Files::FileDescriptor turns_{::inotify_init1(IN_CLOEXEC)};
  PseudoTerminal terminal_;
  WardenLibrary library_;
};

TEST_F(OverlappingQuestionsTest, AreAskedOneAfterTheOther) {
  std::array questions{Challenge(), Challenge()};
  for (std::size_t i = 0; i < questions.size(); ++i) {
    static_cast<void>(terminal_.ReadUntil(kIntroduction));
    std::string shown = terminal_.ReadUntil("User name (empty to cancel): ");
    terminal_.Type("user\n");
    shown += terminal_.ReadUntil("Password: ");
    EXPECT_THAT(shown, Not(HasSubstr(kIntroduction)));
    terminal_.Type("secret\n");
  }
  for (std::future<std::uint32_t>& question : questions) EXPECT_EQ(question.get(), 1U);
}

TEST_F(OverlappingQuestionsTest, AreAllClosedByTheCancellation) {
  std::array questions{Challenge(), Challenge()};
  static_cast<void>(terminal_.ReadUntil("User name (empty to cancel): "));
  library_.CancelRequests();
  for (std::future<std::uint32_t>& question : questions) EXPECT_EQ(question.get(), 8U);
}

}  // namespace
