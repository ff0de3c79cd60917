#include "libs/Wording/Message.h"
#include "libs/Wording/MessageDictionary.h"

#include <gtest/gtest.h>

#include <string>

namespace Wording {
namespace {

Message Nested() {
  return Worded("{count} beacons ({why})",
                {{"count", "2"}, {"why", Worded("{host} is down", {{"host", "a.example"}})}});
}

TEST(MessageTest, IsEnglishByItself) {
  EXPECT_EQ(Worded("It is down.").English(), "It is down.");
  EXPECT_EQ(Nested().English(), "2 beacons (a.example is down)");
}

TEST(MessageTest, OfSomebodyElseIsNoPattern) {
  EXPECT_EQ(Message("{count}").English(), "{count}");
  EXPECT_EQ(Worded("{name}!", {{"name", "{name} {name}"}}).English(), "{name} {name}!");
}

TEST(MessageTest, KeepsPlacesThatNothingIsToldFor) {
  EXPECT_EQ(Worded("{a} {b} {", {{"a", "1"}}).English(), "1 {b} {");
  EXPECT_EQ(Worded("{a", {{"a", "1"}}).English(), "1");
  EXPECT_EQ(Worded("{}", {{"", "1"}}).English(), "1");
}

TEST(MessageTest, ChangesWhatIsForeignOnly) {
  const auto doubled = [](const std::string& text) { return text + text; };
  EXPECT_EQ(Nested().WithForeign(doubled).English(), "22 beacons (a.examplea.example is down)");
  EXPECT_EQ(Message("x").WithForeign(doubled), Message("xx"));
}

TEST(MessageTest, ComesOutOfItsDictionaryTheSame) {
  for (const Message& message : {Message(), Message("{x}"), Worded("It is down."), Nested()})
    EXPECT_EQ(MessageDictionary::Read(MessageDictionary::Of(message)), message);
}

TEST(MessageTest, ReadsWhatIsNoneAsEmpty) {
  EXPECT_EQ(MessageDictionary::Read({}), Message());
  EXPECT_EQ(MessageDictionary::Read({{"Pattern", 7}, {"Text", true}}), Message());
  EXPECT_EQ(MessageDictionary::Read({{"Pattern", "a"}, {"Places", PropertyList::Array{7, "x"}}}),
            Worded("a"));
}

}  // namespace
}  // namespace Wording
