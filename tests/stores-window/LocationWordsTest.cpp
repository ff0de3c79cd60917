#include "Model/LocationWords.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace Stores {
namespace {

constexpr std::uint64_t kLocations = 7;

TEST(LocationWords, EachLocationHasWordsAndAnIconOfItsOwn) {
  std::set<std::string> sentences;
  std::set<std::string> icons;
  for (std::uint64_t location = 0; location <= kLocations; ++location) {
    sentences.insert(LocationWords::Of(location).sentence);
    icons.insert(LocationWords::Of(location).icon);
  }
  EXPECT_EQ(sentences.size(), kLocations + 1);
  EXPECT_EQ(icons.size(), kLocations + 1);
}

TEST(LocationWords, ANumberOfALaterAgentHasWordsToo) {
  EXPECT_STREQ(LocationWords::Of(kLocations).sentence, LocationWords::Of(99).sentence);
}

}  // namespace
}  // namespace Stores
