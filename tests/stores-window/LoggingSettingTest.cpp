#include "Agent/LoggingSetting.h"
#include "libs/Files/UserDefaults.h"
#include "stores-window/MainLoop.h"
#include "support/EnvironmentVariable.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <optional>

namespace Stores {

using namespace Windows;

namespace {

class TheLoggingSetting : public testing::Test {
 protected:
  // What was said of saving it.
  [[nodiscard]] std::optional<bool> Set(bool on) {
    std::optional<bool> saved;
    LoggingSetting::Set(on, cancellable_.get(), [&saved](bool done) { saved = done; });
    EXPECT_FALSE(saved) << "the main loop does not wait for the disk";
    EXPECT_TRUE(RunUntil([&saved] { return saved.has_value(); }));
    return saved;
  }

  const TestSupport::TemporaryFolder folder_;
  const TestSupport::EnvironmentVariable home_{"XDG_CONFIG_HOME", (folder_.Path() / "config").string()};
  const ObjectPtr<GCancellable> cancellable_{g_cancellable_new()};
};

TEST_F(TheLoggingSetting, IsTheUserDefaultThatTheAgentReads) {
  EXPECT_FALSE(LoggingSetting::IsOn());
  EXPECT_EQ(Set(true), true);
  EXPECT_TRUE(LoggingSetting::IsOn());
  EXPECT_EQ(Files::UserDefaults::Standard().Integer("LogLevel"), 1);
  EXPECT_EQ(Set(false), true);
  EXPECT_FALSE(LoggingSetting::IsOn());
}

TEST_F(TheLoggingSetting, TellsThatItCouldNotBeSaved) {
  const TestSupport::EnvironmentVariable nowhere("XDG_CONFIG_HOME", "/dev/null/config");
  EXPECT_EQ(Set(true), false);
}

}  // namespace
}  // namespace Stores
