#include "Agent/StoreCheck.h"

#include <gtest/gtest.h>

namespace Stores {
namespace {

using Result = CheckFinding::Result;

TEST(CheckLine, HoldsAFinding) {
  const auto finding = FindingFromLine(
      R"({"check":"server","next":"Do \u202e this.","result":"problem","store":"s1","text":"It is down."})");
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->result, Result::Problem);
  EXPECT_EQ(finding->check, "server");
  EXPECT_EQ(finding->text, "It is down.");
  EXPECT_EQ(finding->next, "Do \u202E this.");
}

TEST(CheckLine, KnowsEveryResult) {
  EXPECT_EQ(FindingFromLine(R"({"result":"ok"})")->result, Result::Ok);
  EXPECT_EQ(FindingFromLine(R"({"result":"note"})")->result, Result::Note);
  EXPECT_EQ(FindingFromLine(R"({"result":"problem"})")->result, Result::Problem);
  EXPECT_EQ(FindingFromLine(R"({"result":"of a later srctl"})")->result, Result::Note);
}

TEST(CheckLine, MayLackWhatThereIsNotToSay) {
  const auto finding = FindingFromLine(R"({"result":"ok","check":"server","text":"Fine.","next":null})");
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->next, "");
}

TEST(CheckLine, ThatIsNoObjectIsNothing) {
  for (const char* line : {"", "{", "[]", "7", "Nothing is wrong."})
    EXPECT_FALSE(FindingFromLine(line)) << line;
}

}  // namespace
}  // namespace Stores
