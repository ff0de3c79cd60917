#include "libs/Text/HiddenCharacters.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using Range = std::pair<wchar_t, wchar_t>;

void ExpectHidden(const Range& range) {
  for (wchar_t character = range.first; character <= range.second; ++character) {
    EXPECT_TRUE(util::IsHidden(character)) << util::CodeOf(character);
  }
}

// Default_Ignorable_Code_Point in DerivedCoreProperties.txt.
TEST(HiddenCharacters, AreAllThatUnicodeCallsDefaultIgnorable) {
  for (const Range& range :
       {Range(0x00AD, 0x00AD), Range(0x034F, 0x034F), Range(0x061C, 0x061C), Range(0x115F, 0x1160),
        Range(0x17B4, 0x17B5), Range(0x180B, 0x180F), Range(0x200B, 0x200F), Range(0x202A, 0x202E),
        Range(0x2060, 0x206F), Range(0x3164, 0x3164), Range(0xFE00, 0xFE0F), Range(0xFEFF, 0xFEFF),
        Range(0xFFA0, 0xFFA0), Range(0xFFF0, 0xFFF8), Range(0x1BCA0, 0x1BCA3), Range(0x1D173, 0x1D17A),
        Range(0xE0000, 0xE0FFF)}) {
    ExpectHidden(range);
  }
}

TEST(HiddenCharacters, AreControlsEndsOfLinesAndWhatElseHasNoGlyph) {
  for (const Range& range : {Range(0x00, 0x1F), Range(0x7F, 0x9F), Range(0x2028, 0x2029),
                             Range(0xFFF9, 0xFFFB), Range(0x1D159, 0x1D159)}) {
    ExpectHidden(range);
  }
}

TEST(HiddenCharacters, AreNoBlanksAndNothingThatHasAGlyph) {
  for (const wchar_t character :
       {L' ',      L'~',      L'\u00A0', L'\u00AE', L'\u0301', L'\u0600',     L'\u06DD',
        L'\u1100', L'\u180A', L'\u200A', L'\u2027', L'\u202F', L'\u2070',     L'\u2800',
        L'\u3000', L'\uFF9F', L'\uFFEE', L'\uFFFC', L'\uFFFD', L'\U0001D158', L'\U0001F600'}) {
    EXPECT_FALSE(util::IsHidden(character)) << util::CodeOf(character);
  }
}

TEST(HiddenCharacters, AreWrittenOutAmongOtherText) {
  EXPECT_EQ(util::WithHiddenShown(L"Good\uFFF0Bad \U000E0041"), "Good<U+FFF0>Bad <U+E0041>");
}

}  // namespace
