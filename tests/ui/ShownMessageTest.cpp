#include "Shared/ShownMessage.h"

#include <gtest/gtest.h>

namespace {

using Windows::ShownMessage;
using Wording::Message;
using Wording::Worded;

TEST(ShownMessageTest, IsEnglishWithoutACatalogueAndHasWhatIsForeignIsolated) {
  EXPECT_EQ(
      ShownMessage(Worded("{address}: {answer}.",
                          {{"address", "https://a"}, {"answer", Worded("{host} is down", {{"host", "b"}})}})),
      "\u2068https://a\u2069: \u2068b\u2069 is down.");
}

TEST(ShownMessageTest, ShowsTheHiddenCharactersOfWhatIsForeign) {
  EXPECT_EQ(ShownMessage(Message("a\u202Eb\n{c}")), "a<U+202E>b<U+000A>{c}");
  EXPECT_EQ(ShownMessage(Worded("{name}!", {{"name", "a\u202E{name}"}})), "\u2068a<U+202E>{name}\u2069!");
}

}  // namespace
