#include "Model/LocationWords.h"
#include "libs/NetworkLocation/NetworkLocation.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace Stores {
namespace {

constexpr std::uint64_t kLocations = Wayfinding::kPartlyInternal + 1;

LocationWords::Words WordsOf(std::uint64_t number) {
  return LocationWords::Of(Location{.number = number, .reason = {}});
}

TEST(LocationWords, EachLocationHasWordsAndAnIconOfItsOwn) {
  std::set<std::string> sentences;
  std::set<std::string> icons;
  for (std::uint64_t location = 0; location <= kLocations; ++location) {
    sentences.insert(WordsOf(location).sentence);
    icons.insert(WordsOf(location).icon);
  }
  EXPECT_EQ(sentences.size(), kLocations + 1);
  EXPECT_EQ(icons.size(), kLocations + 1);
}

TEST(LocationWords, ANumberOfALaterAgentHasWordsToo) {
  EXPECT_STREQ(WordsOf(kLocations).sentence, WordsOf(99).sentence);
}

TEST(LocationWords, WhatIsNotKnownYetIsBeingFoundOut) {
  EXPECT_STREQ(LocationWords::Of(std::nullopt).sentence, WordsOf(Wayfinding::kDeciding).sentence);
}

}  // namespace
}  // namespace Stores
