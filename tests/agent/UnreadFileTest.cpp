#include "Process/PlatformParts.h"
#include "ResourceKeeper.h"
#include "SRLib/Platform/Messages.h"

#include <gtest/gtest.h>

#include <system_error>

namespace {

TEST(UnreadFile, OneThatNobodyLetsTheAgentReadIsNotPermitted) {
  for (const std::errc error : {std::errc::permission_denied, std::errc::operation_not_permitted}) {
    EXPECT_EQ(Agent::WhyUnread(std::make_error_code(error)),
              util::MessageFromResourceW(util::kReasonNotPermitted));
  }
}

}  // namespace
