#include "libs/DialogWire/DialogWire.h"
#include "libs/HelperProgram/HelperConversation.h"
#include "support/VirtualScreen.h"
#include "ui/SilentClipboardManager.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

// The shipped program with windows, as the module starts it, and its keyboard.
namespace {

using namespace std::chrono_literals;
using HelperProgram::HelperConversation;
using HelperProgram::HelperProcess;

class ErrorProgramTest : public testing::Test {
 protected:
  ErrorProgramTest() {
    screen_.ShowOwnWindows();
    std::optional<HelperProcess> program = HelperProcess::Start(SR_DIALOG_WINDOW_PROGRAM);
    if (!program) throw std::runtime_error("the program cannot be started");
    conversation_.emplace(std::move(*program), -1);
  }

  void Tell(const std::string& title) {
    requests_ += DialogWire::RequestFor(
        DialogWire::kErrorMessage,
        "<plist version=\"1.0\"><dict><key>ErrorTitle</key><string>" + title + "</string></dict></plist>");
  }
  // Converses until then.
  void Await(const std::function<bool()>& condition) {
    const auto deadline = HelperConversation::Clock::now() + 30s;
    while (!condition()) {
      if (HelperConversation::Clock::now() > deadline) throw std::runtime_error("waited in vain");
      std::array<char, 64> buffer{};
      // Nobody announces what else is waited for.
      static_cast<void>(conversation_->Continue(requests_, HelperConversation::Clock::now() + 50ms));
      replies_.append(buffer.data(), conversation_->ReadSome(buffer));
    }
  }

  TestSupport::VirtualScreen screen_;
  TestSupport::SilentClipboardManager manager_{screen_.Display()};
  std::optional<HelperConversation> conversation_;
  std::string requests_;
  std::string replies_;
};

TEST_F(ErrorProgramTest, OnceClosedAnswersNothingAndEndsThoughTheClipboardIsNotTakenOver) {
  Tell("One");
  Await([&] { return replies_ == "accepted\n"; });
  Tell("Two");
  Await([&] { return replies_ == "accepted\naccepted\n"; });
  Await([&] {
    screen_.Type("alt+o");  // copies
    return manager_.IsAnythingCopied();
  });
  Await([&] {
    screen_.Type("Escape");
    return manager_.IsAsked();
  });

  Tell("Three");
  Await([&] { return conversation_->IsOver(); });
  EXPECT_EQ(replies_, "accepted\naccepted\n");
}

}  // namespace
