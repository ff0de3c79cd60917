#include "libs/CredentialWire/CredentialMessage.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(CredentialMessage, IsLinesAndAnEmptyOne) {
  CredentialWire::CredentialMessage message;
  ASSERT_TRUE(message.Set("username", "a=b"));
  ASSERT_TRUE(message.Set("password", ""));
  ASSERT_TRUE(message.Set("username", "c=d"));
  EXPECT_EQ(message.Text().View(), "password=\nusername=c=d\n\n");
}

TEST(CredentialMessage, IsReadBackAsItWasWritten) {
  CredentialWire::CredentialMessage message;
  ASSERT_TRUE(message.Set("realm", "  M\xC3\xBCnchen \"1\" = \\"));
  const auto read = CredentialWire::CredentialMessage::Parse(message.Text().View());
  ASSERT_TRUE(read);
  EXPECT_EQ(read->Get("realm"), "  M\xC3\xBCnchen \"1\" = \\");
  EXPECT_EQ(read->Get("host"), "");
}

TEST(CredentialMessage, TakesNoValueThatCouldPassForAnotherLine) {
  CredentialWire::CredentialMessage message;
  EXPECT_FALSE(message.Set("realm", "a\nusername=b"));
  EXPECT_FALSE(message.Set("realm", std::string_view("a\0b", 3)));
  EXPECT_EQ(message.Text().View(), "\n");
}

TEST(CredentialMessage, EndsAtItsEmptyLine) {
  EXPECT_EQ(CredentialWire::CredentialMessage::LengthOf("a=b\n\nrest"), 5U);
  EXPECT_EQ(CredentialWire::CredentialMessage::LengthOf("\n"), 1U);
  EXPECT_FALSE(CredentialWire::CredentialMessage::LengthOf("a=b\n"));
  EXPECT_FALSE(CredentialWire::CredentialMessage::LengthOf(""));
}

TEST(CredentialMessage, IsNoneWhenALineHasNoKey) {
  EXPECT_FALSE(CredentialWire::CredentialMessage::Parse("a\n\n"));
  EXPECT_FALSE(CredentialWire::CredentialMessage::Parse("=a\n\n"));
  EXPECT_FALSE(CredentialWire::CredentialMessage::Parse("a=b\n"));
  EXPECT_FALSE(CredentialWire::CredentialMessage::Parse("a=" + std::string(70000, 'x') + "\n\n"));
  EXPECT_TRUE(CredentialWire::CredentialMessage::Parse("\n"));
}

}  // namespace
