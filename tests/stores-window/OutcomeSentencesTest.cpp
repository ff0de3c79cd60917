#include "Model/OutcomeSentences.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace Stores {
namespace {

constexpr const char* kOutcomes[]{
    "ended",    "not-saved", "could-not-ask", "not-a-service-record", "server-not-verified",
    "declined", "replaced",  "added"};

Finished OfStore(const std::string& outcome, const std::string& reason = {}) {
  return {1, outcome, {{"s1", "One", outcome, reason}}};
}

TEST(OutcomeSentences, NameTheStore) {
  EXPECT_EQ(OutcomeSentences::Of(OfStore("added"), "a.cr"), "“\u2068One\u2069” was added.");
}

TEST(OutcomeSentences, NameTheFileWhereThereIsNoStore) {
  EXPECT_EQ(OutcomeSentences::Of({1, "not-a-service-record", {}}, "a.cr"),
            "“\u2068a.cr\u2069” is not a service record. Open the file that your administrator gave you.");
}

TEST(OutcomeSentences, SayWhyTheFileCouldNotBeRead) {
  EXPECT_EQ(OutcomeSentences::Of({1, "not-a-service-record", {}, "So it is."}, "a.cr"),
            "“\u2068a.cr\u2069” could not be read. \u2068So it is.\u2069");
}

TEST(OutcomeSentences, EachOutcomeHasSentencesOfItsOwn) {
  std::set<std::string> sentences;
  for (const char* outcome : kOutcomes) {
    sentences.insert(OutcomeSentences::Of(OfStore(outcome), "a.cr"));
    sentences.insert(OutcomeSentences::Of({1, outcome, {}}, "a.cr"));
  }
  EXPECT_EQ(sentences.size(), 2 * std::size(kOutcomes));
}

TEST(OutcomeSentences, AnOutcomeOfALaterAgentIsNotCalledAddedOrNot) {
  EXPECT_EQ(OutcomeSentences::Of(OfStore("postponed"), "a.cr"), "“\u2068One\u2069” was looked at.");
}

TEST(OutcomeSentences, TellTheReason) {
  EXPECT_THAT(OutcomeSentences::Of(OfStore("server-not-verified", "It expired yesterday\u202E."), "a.cr"),
              HasSubstr(" \u2068It expired yesterday<U+202E>.\u2069"));
}

TEST(OutcomeSentences, WhatSomebodyElseWroteStaysOnItsLineOfTheReason) {
  EXPECT_THAT(OutcomeSentences::Of(OfStore("server-not-verified", "Issued by:\n\u05D0\u05D1 12 a.b"), "a.cr"),
              HasSubstr(" \u2068Issued by:\u2069\n\u2068\u05D0\u05D1 12 a.b\u2069"));
}

TEST(OutcomeSentences, AForeignNameStaysWithinItsPlace) {
  const Finished finished{1, "added", {{"s1", "One” was added. “\u202EX{store}", "added", ""}}};
  EXPECT_EQ(OutcomeSentences::Of(finished, "a.cr"),
            "“\u2068One” was added. “<U+202E>X{store}\u2069” was added.");
}

TEST(OutcomeSentences, AreOneLineForEachStore) {
  const Finished finished{1, "declined", {{"s1", "One", "added", ""}, {"s2", "Two", "declined", ""}}};
  EXPECT_EQ(OutcomeSentences::Of(finished, "a.cr"),
            "“\u2068One\u2069” was added.\n“\u2068Two\u2069” was not added, because you decided against it.");
}

TEST(OutcomeSentences, OfManyStoresCountTheRest) {
  Finished finished{1, "added", {}};
  for (int number = 0; number < 100; ++number) {
    finished.stores.push_back({"", "Store " + std::to_string(number), "added", ""});
  }
  const std::string sentences = OutcomeSentences::Of(finished, "a.cr");
  EXPECT_EQ(std::count(sentences.begin(), sentences.end(), '\n'), 6);
  EXPECT_THAT(sentences, HasSubstr("Store 5"));
  EXPECT_THAT(sentences, Not(HasSubstr("Store 6")));
  EXPECT_THAT(sentences, HasSubstr("\nThe file has \u206894\u2069 more stores."));
}

TEST(OutcomeSentences, OfManyFilesThatWereNotOpenedNameTheFirstOnly) {
  const std::vector<std::string> six(6, "a.cr");
  const std::string sentences = OutcomeSentences::OfEnded(six);
  EXPECT_EQ(std::count(sentences.begin(), sentences.end(), '\n'), 5);
  EXPECT_THAT(sentences, Not(HasSubstr("more")));
  EXPECT_EQ(OutcomeSentences::OfEnded(std::vector<std::string>(8, "a.cr")),
            sentences +
                "\n\u2068"
                "2\u2069 more files were not opened.");
}

TEST(OutcomeSentences, OfManyNoticesCountTheRest) {
  EXPECT_EQ(OutcomeSentences::OfAll({{"One."}, {"Two."}}), "One.\nTwo.");
  EXPECT_EQ(OutcomeSentences::OfAll(std::vector<Notice>(8, {"One."})),
            "One.\nOne.\nOne.\nOne.\nOne.\nOne.\nThere are \u20682\u2069 more messages.");
}

TEST(OutcomeSentences, TheAddedStoreIsTheFirstThatIsInTheListNow) {
  const Finished finished{
      1,
      "declined",
      {{"s1", "One", "declined", ""}, {"s2", "Two", "replaced", ""}, {"s3", "Three", "added", ""}}};
  EXPECT_EQ(OutcomeSentences::AddedStore(finished), "s2");
  EXPECT_EQ(OutcomeSentences::AddedStore({1, "added", {}}), "");
}

TEST(OutcomeSentences, OnlyAddedAndReplacedAreGood) {
  std::set<std::string> good;
  for (const char* outcome : kOutcomes) {
    if (OutcomeSentences::IsGood(OfStore(outcome))) good.insert(outcome);
  }
  EXPECT_EQ(good, (std::set<std::string>{"added", "replaced"}));
}

}  // namespace
}  // namespace Stores
