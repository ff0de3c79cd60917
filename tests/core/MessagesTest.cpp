#include "SRLib/Platform/Messages.h"
#include "fakes/StubMessages.h"

#include <gtest/gtest.h>

namespace {

TEST(MessagesTest, TheArgumentTakesItsPlaceInTheText) {
  EXPECT_EQ(util::WithArgument(TestSupport::StubMessage(util::kMessageServerNotContacted), "https://h"),
            L"message 1632 about https://h");
}

TEST(MessagesTest, TheArgumentIsUtf8AndIsNotReadAsAFormat) {
  EXPECT_EQ(util::WithArgument(TestSupport::StubMessage(util::kMessageEmptyHostName), "\xC3\xA9%S"),
            L"message 1656 about \u00E9%S");
}

TEST(MessagesTest, ATextWithoutAPlaceIsLeftAsItIs) {
  EXPECT_EQ(util::WithArgument(TestSupport::StubMessage(util::kMessageStoreTitle), "https://h"),
            L"message 1600");
}

}  // namespace
