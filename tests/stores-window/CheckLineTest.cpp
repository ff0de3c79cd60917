#include "Agent/StoreCheck.h"

#include <gtest/gtest.h>

namespace Stores {
namespace {

using Wording::Message;
using Wording::Worded;
using Result = CheckFinding::Result;

TEST(CheckLine, HoldsAFinding) {
  const auto finding = FindingFromLine(
      R"({"check":"server","nextMessage":"Do \u202e this.","result":"problem","store":"s1","textMessage":
          {"pattern":"{a}: {b}.","places":{"a":"https://a","b":{"pattern":"It is down","places":{}}}}})");
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->result, Result::Problem);
  EXPECT_EQ(finding->check, "server");
  EXPECT_EQ(finding->text, Worded("{a}: {b}.", {{"a", "https://a"}, {"b", Worded("It is down")}}));
  EXPECT_EQ(finding->next, Message("Do \u202E this."));
}

TEST(CheckLine, KnowsEveryResult) {
  EXPECT_EQ(FindingFromLine(R"({"result":"ok"})")->result, Result::Ok);
  EXPECT_EQ(FindingFromLine(R"({"result":"note"})")->result, Result::Note);
  EXPECT_EQ(FindingFromLine(R"({"result":"problem"})")->result, Result::Problem);
  EXPECT_EQ(FindingFromLine(R"({"result":"of a later srctl"})")->result, Result::Note);
}

TEST(CheckLine, MayLackWhatThereIsNotToSay) {
  const auto finding =
      FindingFromLine(R"({"result":"ok","check":"server","textMessage":{"pattern":"Fine."}})");
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->text, Worded("Fine."));
  EXPECT_EQ(finding->next, Message());
  EXPECT_EQ(FindingFromLine(R"({"textMessage":{}})")->text, Message());
}

TEST(CheckLine, ThatIsNoObjectIsNothing) {
  for (const char* line : {"", "{", "[]", "7", "Nothing is wrong."})
    EXPECT_FALSE(FindingFromLine(line)) << line;
}

}  // namespace
}  // namespace Stores
