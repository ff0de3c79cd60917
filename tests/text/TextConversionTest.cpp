#include "libs/Text/TextHelpers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

using namespace std::string_literals;

namespace {

TEST(Narrow, WritesOneToFourBytes) {
  EXPECT_EQ(util::narrow(L"a\u007F"), "a\x7F");
  EXPECT_EQ(util::narrow(L"\u0080\u07FF"), "\xC2\x80\xDF\xBF");
  EXPECT_EQ(util::narrow(L"\u0800\uFFFF"), "\xE0\xA0\x80\xEF\xBF\xBF");
  EXPECT_EQ(util::narrow(L"\U00010000\U0010FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(Narrow, DropsALoneSurrogateOnly) {
  EXPECT_EQ(
      util::narrow(std::wstring{L'a', static_cast<wchar_t>(0xD800), L'b', static_cast<wchar_t>(0xDFFF)}),
      "ab");
}

TEST(Narrow, DropsNegativeAndTooLargeValues) {
  EXPECT_EQ(util::narrow(std::wstring{static_cast<wchar_t>(-1), L'x', static_cast<wchar_t>(0x110000)}), "x");
}

TEST(Narrow, KeepsNulCharacters) {
  EXPECT_EQ(util::narrow(L"a\0b"s), "a\0b"s);
}

TEST(NarrowedSize, IsThatOfTheBytes) {
  for (const std::uint32_t first : {0U, 0x7FU, 0x7FFU, 0xD7FFU, 0xDFFFU, 0xFFFFU, 0x10FFFFU, 0xFFFFFFFEU}) {
    const std::wstring text{L'a', static_cast<wchar_t>(first), static_cast<wchar_t>(first + 1)};
    EXPECT_EQ(util::NarrowedSize(text), util::narrow(text).size()) << first;
  }
  EXPECT_EQ(util::NarrowedSize(L""), 0U);
}

TEST(Widen, ReadsOneToFourBytes) {
  EXPECT_EQ(util::widen("a\xC2\x80\xE0\xA0\x80\xF4\x8F\xBF\xBF"), L"a\u0080\u0800\U0010FFFF");
}

TEST(Widen, DropsALeadByteWithoutItsContinuation) {
  EXPECT_EQ(util::widen("\xC3\x28"), L"(");
}

TEST(Widen, DropsAnOverlongZeroWhole) {
  EXPECT_EQ(util::widen("\xC0\x80"), L"");
}

TEST(Widen, DropsASequenceThatTheEndCutsOff) {
  EXPECT_EQ(util::widen("\xE2\x82"), L"");
  EXPECT_EQ(util::widen("x\xF0\x9F\x98"), L"x");
}

TEST(Widen, DropsSurrogatesOverlongsAndWhatIsOutOfRange) {
  EXPECT_EQ(util::widen("a\xED\xA0\x80z"), L"az");
  EXPECT_EQ(util::widen("a\xE0\x80\x80z"), L"az");
  EXPECT_EQ(util::widen("a\xF4\x90\x80\x80z"), L"az");
  EXPECT_EQ(util::widen("a\xF8\xFFz"), L"az");
}

TEST(Widen, ResumesAtTheVeryNextByte) {
  EXPECT_EQ(util::widen("\xE2\xC3\xA9"), L"\u00E9");
}

TEST(IsUTF8, TellsValidTextFromAnyOther) {
  EXPECT_TRUE(util::IsUTF8("St\xC3\xB6re"));
  EXPECT_TRUE(util::IsUTF8(""));
  EXPECT_FALSE(util::IsUTF8("St\xF6re"));
  EXPECT_FALSE(util::IsUTF8("\xED\xA0\x80"));
}

}  // namespace
