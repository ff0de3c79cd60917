#include "report/Judgement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using Bench::Figures;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

json Target(const json& fields) {
  json target{{"group", "g"},       {"what", "it"}, {"measured", "It"},
              {"floor", "ItFloor"}, {"unit", "us"}, {"target", "words"}};
  target.update(fields);
  return {{"targets", json::array({target})}};
}

bool IsMet(const json& target, const Figures& figures) {
  return Bench::AllMet(Bench::Judge(Target(target), {}, figures));
}

TEST(Judgement, AllowsTimesTheFloorAndNoMore) {
  EXPECT_TRUE(IsMet({{"times", 1.5}}, {{"It", 1500}, {"ItFloor", 1000}}));
  EXPECT_FALSE(IsMet({{"times", 1.5}}, {{"It", 1501}, {"ItFloor", 1000}}));
}

TEST(Judgement, AllowsWhatTheTargetAddsToTheFloor) {
  const json target{{"times", 2}, {"constant", 10}, {"plus", {{{"figure", "It:calls"}, {"each", 100}}}}};
  EXPECT_TRUE(IsMet(target, {{"It", 2310}, {"ItFloor", 1000}, {"It:calls", 3}}));
  EXPECT_FALSE(IsMet(target, {{"It", 2311}, {"ItFloor", 1000}, {"It:calls", 3}}));
}

TEST(Judgement, AllowsNothingWhereTheTargetIsNone) {
  EXPECT_TRUE(IsMet({{"constant", 0}}, {{"It", 0}}));
  EXPECT_FALSE(IsMet({{"constant", 0}}, {{"It", 1}}));
}

TEST(Judgement, MissesWhatWasNotMeasured) {
  EXPECT_FALSE(IsMet({{"constant", 10}}, {}));
  EXPECT_FALSE(IsMet({{"times", 2}}, {{"It", 1}}));
  EXPECT_FALSE(IsMet({{"constant", 10}, {"plus", {{{"figure", "It:calls"}, {"each", 100}}}}}, {{"It", 1}}));
}

TEST(Judgement, TakesOnlyTheGroupsThatAreNamed) {
  const json targets = Target({{"times", 2}});
  EXPECT_EQ(Bench::Judge(targets, {"g"}, {}).size(), 1U);
  EXPECT_TRUE(Bench::Judge(targets, {"another"}, {}).empty());
}

TEST(Judgement, PutsAmountsAndVerdictsIntoTheTable) {
  const auto table = [](const Figures& figures) {
    return Bench::Table(Bench::Judge(Target({{"times", 2}}), {}, figures));
  };
  EXPECT_THAT(table({{"It", 2500}, {"ItFloor", 1000}}),
              HasSubstr("| it   | 1 us  | 2.50 us  | 2.50  | words  | 2 us    | MISSED  |"));
  EXPECT_THAT(table({{"It", 150000}, {"ItFloor", 100000}}),
              HasSubstr("| 100 us | 150 us   | 1.50  | words  | 200 us  | met     |"));
  EXPECT_THAT(table({}), HasSubstr("| -        | -     | words  | -       | missed: not measured |"));
}

TEST(Judgement, KeepsWhatWasNotMeasuredAsNothing) {
  const json rows = Bench::AsJson(Bench::Judge(Target({{"times", 2}}), {}, {{"It", 3}}));
  EXPECT_EQ(rows[0]["measured"], 3);
  EXPECT_TRUE(rows[0]["floor"].is_null());
  EXPECT_FALSE(rows[0]["met"]);
}

TEST(PlotScript, HasALineForEverySizeThatWasMeasured) {
  const json plot{
      {"title", "It"}, {"unit", "us"}, {"measured", "It"}, {"floor", "ItFloor"}, {"sizes", {10, 100, 1000}}};
  EXPECT_EQ(Bench::PlotScript(plot, {{"It/10", 1000}, {"ItFloor/10", 500}, {"It/1000", 3000}}),
            "title = 'It'\nunit = 'us'\nfloor = 1\n$data << end\n10 1 0.5\n1000 3 ?\nend\n");
  EXPECT_EQ(Bench::PlotScript(plot, {}), "");
}

}  // namespace
