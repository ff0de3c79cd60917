#include "libs/Warden_SDK/Challenge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Warden::Challenge;

std::vector<Challenge> ParsedChallenges(const std::string& value) {
  std::vector<Challenge> challenges;
  Warden::AppendChallenges(value, challenges);
  return challenges;
}

std::vector<std::string> Schemes(const std::string& value) {
  std::vector<std::string> schemes;
  for (const Challenge& challenge : ParsedChallenges(value)) schemes.push_back(challenge.scheme);
  return schemes;
}

TEST(Challenge, HasItsSchemeInLowerCaseAndItsParametersUnquoted) {
  const std::vector<Challenge> challenges =
      ParsedChallenges(R"(BASIC Realm="a \"b\" \\c, d=e", charset=UTF-8)");
  ASSERT_EQ(challenges.size(), 1U);
  EXPECT_EQ(challenges[0].scheme, "basic");
  EXPECT_THAT(challenges[0].parameters,
              ElementsAre(Pair("realm", R"(a "b" \c, d=e)"), Pair("charset", "UTF-8")));
}

TEST(Challenge, SeveralShareOneLine) {
  const std::vector<Challenge> challenges = ParsedChallenges(
      R"(Negotiate, Digest realm="r", qop="auth,auth-int", nonce=abc , Basic realm="x,y",NTLM)");
  ASSERT_EQ(challenges.size(), 4U);
  EXPECT_EQ(challenges[0].scheme, "negotiate");
  EXPECT_THAT(challenges[1].parameters,
              ElementsAre(Pair("realm", "r"), Pair("qop", "auth,auth-int"), Pair("nonce", "abc")));
  EXPECT_THAT(challenges[2].parameters, ElementsAre(Pair("realm", "x,y")));
  EXPECT_EQ(challenges[3].scheme, "ntlm");
}

TEST(Challenge, MayCarryATokenInsteadOfParameters) {
  const std::vector<Challenge> challenges = ParsedChallenges(R"(Negotiate YIIab+/c==, Basic realm=r)");
  ASSERT_EQ(challenges.size(), 2U);
  EXPECT_EQ(challenges[0].token, "YIIab+/c==");
  EXPECT_THAT(challenges[1].parameters, ElementsAre(Pair("realm", "r")));
}

TEST(Challenge, AllowsBlanksAroundAnEqualsSignAndEmptyListItems) {
  const std::vector<Challenge> challenges =
      ParsedChallenges(", ,Basic realm = \"r\" ,, charset\t=\tUTF-8,, Negotiate ,");
  ASSERT_EQ(challenges.size(), 2U);
  EXPECT_THAT(challenges[0].parameters, ElementsAre(Pair("realm", "r"), Pair("charset", "UTF-8")));
}

TEST(Challenge, AMalformedOneEndsTheLineButNotTheOnesBefore) {
  EXPECT_THAT(Schemes(R"(Negotiate, Basic realm="open)"), ElementsAre("negotiate"));
  EXPECT_THAT(Schemes(R"(Negotiate, Basic realm="open\)"), ElementsAre("negotiate"));
  EXPECT_THAT(Schemes(R"(Basic realm="a" realm2="b")"), IsEmpty());
  EXPECT_THAT(Schemes(R"(Basic realm=)"), ElementsAre("basic"));
  EXPECT_THAT(Schemes(R"(Basic realm=")"), IsEmpty());
  EXPECT_THAT(Schemes(R"(="x", Basic realm=r)"), IsEmpty());
  EXPECT_THAT(Schemes(R"(Digest "realm"="r")"), IsEmpty());
  EXPECT_THAT(Schemes(""), IsEmpty());
}

TEST(Challenge, AParameterGivenTwiceIsMalformed) {
  EXPECT_THAT(Schemes(R"(Digest realm="a", nonce="b", Realm="c")"), IsEmpty());
}

TEST(Challenge, ALineOfManyParametersIsMalformed) {
  std::string line = "Digest ";
  for (int i = 0; i < 1000; ++i) line += "p" + std::to_string(i) + "=v,";
  EXPECT_THAT(Schemes(line), IsEmpty());
}

}  // namespace
