#include "dialog/TerminalText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using TerminalText::Indented;
using TerminalText::OneLine;

const std::string kReplaced = "\xEF\xBF\xBD";

TEST(TerminalTextTest, KeepsReadableTextOfEveryLength) {
  const std::string text = "Az \xC3\xBC \xE6\x9D\xB1 \xF0\x9F\x8F\xAA";
  EXPECT_EQ(OneLine(text, 100), text);
  EXPECT_EQ(OneLine("", 100), "");
}

TEST(TerminalTextTest, ReplacesControlCharactersOfBothRanges) {
  EXPECT_EQ(OneLine("\x1B[2J", 100), kReplaced + "[2J");
  EXPECT_EQ(OneLine("\r\n\t\x7F", 100), kReplaced + kReplaced + kReplaced + kReplaced);
  EXPECT_EQ(OneLine("\xC2\x9B"
                    "2J",
                    100),
            kReplaced + "2J");
  EXPECT_EQ(OneLine(std::string("\0", 1), 100), kReplaced);
}

TEST(TerminalTextTest, ReplacesCharactersThatReorderOrHideText) {
  EXPECT_EQ(OneLine("\xE2\x80\xAE", 100), kReplaced);
  EXPECT_EQ(OneLine("\xE2\x81\xA6", 100), kReplaced);
  EXPECT_EQ(OneLine("\xE2\x80\x8B", 100), kReplaced);
  EXPECT_EQ(OneLine("\xE2\x80\xA8", 100), kReplaced);
  EXPECT_EQ(OneLine("\xF3\xA0\x81\x81", 100), kReplaced);
}

TEST(TerminalTextTest, ReplacesBytesThatAreNotUtf8) {
  EXPECT_EQ(OneLine("a\x9B"
                    "b",
                    100),
            "a" + kReplaced + "b");
  EXPECT_EQ(OneLine("\xC0\x9B", 100), kReplaced + kReplaced);
  EXPECT_EQ(OneLine("\xE0\x82\x9B", 100), kReplaced + kReplaced + kReplaced);
  EXPECT_EQ(OneLine("\xED\xA0\x80", 100), kReplaced + kReplaced + kReplaced);
  EXPECT_EQ(OneLine("\xF4\x90\x80\x80", 100), kReplaced + kReplaced + kReplaced + kReplaced);
  EXPECT_EQ(OneLine("\xC3", 100), kReplaced);
}

TEST(TerminalTextTest, CutsWhatIsLongerThanTheLimit) {
  EXPECT_EQ(OneLine("abc", 3), "abc");
  EXPECT_EQ(OneLine("abcd", 3), "abc\xE2\x80\xA6");
  EXPECT_EQ(OneLine("\xC3\xBC\xC3\xBC\xC3\xBC", 2), "\xC3\xBC\xC3\xBC\xE2\x80\xA6");
}

TEST(TerminalTextTest, IndentsEveryLineOfAMessage) {
  EXPECT_EQ(Indented("one\ntwo\r\x1B[A", 100), "  one\n  two" + kReplaced + kReplaced + "[A");
}

}  // namespace
