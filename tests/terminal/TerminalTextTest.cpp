#include "libs/Terminal/TerminalText.h"
#include "libs/Text/TextHelpers.h"

#include <gmock/gmock.h>

#include <clocale>
#include <string>

namespace {

using Terminal::AddressLines;
using Terminal::Folded;
using Terminal::Indented;
using Terminal::OneLine;
using Terminal::SingleBlanks;
using ::testing::ElementsAre;

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

TEST(TerminalTextTest, ReplacesCharactersThatAreSeenAsNothing) {
  for (const wchar_t invisible : {L'\u034F', L'\u115F', L'\u1160', L'\u17B4', L'\u17B5', L'\u180B', L'\u180F',
                                  L'\u3164', L'\uFFA0', L'\uFE00', L'\uFE0F', L'\U0001BCA0', L'\U0001BCA3',
                                  L'\U0001D173', L'\U0001D17A', L'\U000E0080', L'\U000E0FFF'}) {
    EXPECT_EQ(OneLine(util::narrow(std::wstring(1, invisible))), kReplaced) << std::hex << +invisible;
  }
}

TEST(TerminalTextTest, RunsOfBlanksOfEveryWidthBecomeOneBlank) {
  std::wstring blanks = L"\u00A0\u1680\u202F\u205F\u2800\u3000 ";
  for (wchar_t blank = L'\u2000'; blank <= L'\u200A'; ++blank) blanks += blank;
  const std::string run = util::narrow(blanks);

  EXPECT_EQ(SingleBlanks(run + "a" + run + "b c" + run), "a b c");
  EXPECT_EQ(SingleBlanks("\xE3\x80\x80"), "");
}

TEST(TerminalTextTest, FoldsAtBlanksAndWithinLongWords) {
  EXPECT_THAT(Folded("", 4), ElementsAre(""));
  EXPECT_THAT(Folded("abcd", 4), ElementsAre("abcd"));
  EXPECT_THAT(Folded("abcd ef", 4), ElementsAre("abcd", "ef"));
  EXPECT_THAT(Folded("ab cdef", 4), ElementsAre("ab", "cdef"));
  EXPECT_THAT(Folded("a bcdefgh i", 4), ElementsAre("a", "bcde", "fgh", "i"));
  EXPECT_THAT(Folded(" abcde", 4), ElementsAre(" abc", "de"));
  EXPECT_THAT(Folded("ab", 0), ElementsAre("a", "b"));
}

TEST(TerminalTextTest, FoldsAsIfEverythingButAsciiWereWide) {
  EXPECT_THAT(Folded("\xC3\xBC\xC3\xBC\xE6\x9D\xB1", 5), ElementsAre("\xC3\xBC\xC3\xBC", "\xE6\x9D\xB1"));
  EXPECT_THAT(Folded("\xC3\xBC\xC3\xBC", 1), ElementsAre("\xC3\xBC", "\xC3\xBC"));
}

TEST(TerminalTextTest, LeavesOutBytesThatAreNotUtf8) {
  EXPECT_EQ(OneLine("a\x9B"
                    "b",
                    100),
            "ab");
  EXPECT_EQ(OneLine("\xC0\x9B\xED\xA0\x80\xC3", 100), "");
}

TEST(TerminalTextTest, MeasuresColumns) {
  ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
  EXPECT_EQ(Terminal::Width("a\xC3\xBC\xE6\x9D\xB1"), 4U);
}

TEST(TerminalTextTest, CutsWhatIsLongerThanTheLimit) {
  EXPECT_EQ(OneLine("abc", 3), "abc");
  EXPECT_EQ(OneLine("abcd", 3), "abc\xE2\x80\xA6");
  EXPECT_EQ(OneLine("\xC3\xBC\xC3\xBC\xC3\xBC", 2), "\xC3\xBC\xC3\xBC\xE2\x80\xA6");
}

TEST(TerminalTextTest, IndentsEveryLineOfAMessage) {
  EXPECT_EQ(Indented("one\n\ntwo\r\x1B[A", 80), "  one\n  \n  two" + kReplaced + kReplaced + "[A");
  EXPECT_EQ(Indented("", 80), "  ");
}

TEST(TerminalTextTest, FoldsAMessageBetweenItsIndentationAndTheEdge) {
  EXPECT_EQ(Indented("one   two three\nfour", 9), "  one two\n  three\n  four");
  EXPECT_EQ(Indented(std::string(5000, 'x'), 5002), "  " + std::string(5000, 'x'));
}

TEST(TerminalTextTest, AnAddressIsAWholeLineUpToItsPathAndThePath) {
  EXPECT_THAT(AddressLines("https://h:8443"), ElementsAre("https://h:8443"));
  EXPECT_THAT(AddressLines("HTTPS://h:8443/"), ElementsAre("HTTPS://h:8443"));
  EXPECT_THAT(AddressLines("h/s://evil/p"), ElementsAre("h/s://evil", "/p")) << "as it is requested";
  EXPECT_THAT(AddressLines("https://h\x1B/a\x1B"), ElementsAre("https://h" + kReplaced, "/a" + kReplaced));
  EXPECT_THAT(AddressLines("https://good@evil/x"), ElementsAre("https://good@evil", "/x"));
  EXPECT_THAT(AddressLines(""), ElementsAre(""));
}

TEST(TerminalTextTest, OfAnAddressOnlyThePathIsCut) {
  const std::string server = "https://" + std::string(5000, 'h') + ".example";
  EXPECT_THAT(AddressLines(server + "/" + std::string(300, 'p')),
              ElementsAre(server, "/" + std::string(199, 'p') + "\xE2\x80\xA6"));
}

TEST(TerminalTextTest, AnAddressInAMessageStandsOnLinesOfItsOwn) {
  EXPECT_EQ(Indented("Not contacted:\nhttps://abcdef/path\nCheck it.", 14),
            "  Not\n  contacted:\n  https://abcd\n  ef\n  /path\n  Check it.");
  EXPECT_EQ(Indented("See https://h/path", 80), "  See https://h/path");
}

}  // namespace
