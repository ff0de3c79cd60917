#include "Shared/ShownText.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using namespace Windows;

using ::testing::EndsWith;

TEST(ShownTextTest, CharactersThatNobodySeesAreWrittenOut) {
  EXPECT_EQ(ShownText::Whole("evil\u202Egpj.cr"), "evil<U+202E>gpj.cr");
  EXPECT_EQ(ShownText::Whole("a\u200Bb\uFEFFc"), "a<U+200B>b<U+FEFF>c");
  EXPECT_EQ(ShownText::Whole("a\u2066b\u2069"), "a<U+2066>b<U+2069>");
  EXPECT_EQ(ShownText::Whole("a\nb\x1B[1m"), "a<U+000A>b<U+001B>[1m");
  EXPECT_EQ(ShownText::Whole("a\U000E0041"), "a<U+E0041>");
}

TEST(ShownTextTest, OtherTextStaysAsItIs) {
  EXPECT_EQ(ShownText::Whole("M\u00FCnchen \u6771 <b>&amp;</b> \u05D0\u05D1"),
            "M\u00FCnchen \u6771 <b>&amp;</b> \u05D0\u05D1");
}

TEST(ShownTextTest, BlanksPushNothingAway) {
  EXPECT_EQ(ShownText::Whole("  a \u3000\u00A0  b "), "a b");
}

TEST(ShownTextTest, ALongNameIsCutButAWholeTextIsNot) {
  const std::string text(300, 'x');
  EXPECT_EQ(ShownText::Name(text), std::string(200, 'x') + "\u2026");
  EXPECT_EQ(ShownText::Name(text.substr(0, 200)), text.substr(0, 200));
  EXPECT_EQ(ShownText::Whole(text), text);
}

TEST(ShownTextTest, ACutNeverFallsIntoAWrittenOutCharacter) {
  EXPECT_THAT(ShownText::Name(std::string(199, 'x') + "\u202E" + "yy"), EndsWith("x<U+202E>\u2026"));
}

TEST(ShownTextTest, LinesStayLines) {
  EXPECT_EQ(ShownText::Lines("one\n\n two\u202E \nthree"), "one\n\ntwo<U+202E>\nthree");
}

TEST(ShownTextTest, AnExactTextShowsEachBlankThatIsNoSpaceBetweenWords) {
  EXPECT_EQ(ShownText::Exact("a b"), "a b");
  EXPECT_EQ(ShownText::Exact(" a  b\u00A0c "), "<U+0020>a<U+0020><U+0020>b<U+00A0>c<U+0020>");
  EXPECT_EQ(ShownText::Exact("\u202E"), "<U+202E>");
  EXPECT_EQ(ShownText::Exact("<U+202E>"), "<U+003C>U+202E>");
  EXPECT_EQ(ShownText::Exact(std::string(300, 'x')), std::string(300, 'x'));
}

TEST(ShownTextTest, LinesAreIsolatedEachForItself) {
  EXPECT_EQ(ShownText::Isolated("one\ntwo"), "\u2068one\u2069\n\u2068two\u2069");
}

TEST(ShownTextTest, ASentenceIsolatesWhatIsFilledIn) {
  EXPECT_EQ(ShownText::Sentence("Add {store} of {host}?", {{"store", "Main"}, {"host", "a.example"}}),
            "Add \u2068Main\u2069 of \u2068"
            "a.example\u2069?");
}

TEST(ShownTextTest, AFilledInTextFillsInNothing) {
  EXPECT_EQ(ShownText::Sentence("{a}{b}", {{"a", "{b}"}, {"b", "x"}}), "\u2068{b}\u2069\u2068x\u2069");
}

TEST(ShownTextTest, AnUnknownPlaceStays) {
  EXPECT_EQ(ShownText::Sentence("{a} {b} {", {{"a", "x"}}), "\u2068x\u2069 {b} {");
}

TEST(ShownTextTest, TheHostOfAnAddressIsWholeWhateverStandsAroundIt) {
  EXPECT_EQ(ShownText::HostOf("https://store.example.com:8443/path?q"), "store.example.com");
  EXPECT_EQ(ShownText::HostOf("store.example.com"), "store.example.com");
  EXPECT_EQ(ShownText::HostOf("https://good.example@evil.example/"), "good.example@evil.example");
  EXPECT_EQ(ShownText::HostOf("https://a\u202E.example"), "a<U+202E>.example");
  const std::string host = std::string(300, 'a') + ".example";
  EXPECT_EQ(ShownText::HostOf("https://" + host + "/"), host);
  EXPECT_EQ(ShownText::HostOf(""), "");
}

TEST(ShownTextTest, TheServerOfAnAddressHasItsPortWhereThatIsNotTheUsualOne) {
  EXPECT_EQ(ShownText::ServerOf("https://store.example:8443/path?q"), "store.example:8443");
  EXPECT_EQ(ShownText::ServerOf("https://store.example:443/"), "store.example");
  EXPECT_EQ(ShownText::ServerOf("http://store.example:443/"), "store.example:443");
  EXPECT_EQ(ShownText::ServerOf("https://store.example:/"), "store.example");
  EXPECT_EQ(ShownText::ServerOf("https://store.example:8\u202E0"), "store.example:8<U+202E>0");
  EXPECT_EQ(ShownText::ServerOf("https://[fd00::1]:8443/"), "[fd00::1]:8443");
  EXPECT_EQ(ShownText::ServerOf(""), "");
}

}  // namespace
