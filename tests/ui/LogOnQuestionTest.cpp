#include "ui/FactPrinting.h"
#include "view/LogOnQuestion.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using Dialogs::Fact;
using Dialogs::LogOnQuestion;
using PropertyList::Dictionary;
using ::testing::ElementsAre;

std::string IntroductionFor(const char* place, const char* store, const char* gateway) {
  return LogOnQuestion::Of({{"Place", place}, {"StoreName", store}, {"GatewayName", gateway}}).introduction;
}

TEST(LogOnQuestionTest, SaysWhichStoreAndGatewayAsks) {
  EXPECT_EQ(IntroductionFor("gateway", "Sales", "Main"),
            "The gateway “\u2068Main\u2069” of the store “\u2068Sales\u2069” asks you to log on.");
  EXPECT_EQ(IntroductionFor("gateway", "Sales", ""),
            "A gateway of the store “\u2068Sales\u2069” asks you to log on.");
  EXPECT_EQ(IntroductionFor("gateway", "", "Main"), "The gateway “\u2068Main\u2069” asks you to log on.");
  EXPECT_EQ(IntroductionFor("gateway", "", ""), "A gateway asks you to log on.");
  EXPECT_EQ(IntroductionFor("store", "Sales", "Main"), "The store “\u2068Sales\u2069” asks you to log on.");
  EXPECT_EQ(IntroductionFor("store", "", ""), "A store asks you to log on.");
}

TEST(LogOnQuestionTest, TheServerIsWholeAndItsHostStandsOut) {
  const LogOnQuestion question =
      LogOnQuestion::Of({{"Server", "https://gateway.example:8443"}, {"Realm", "St\u202Eaff"}});

  EXPECT_EQ(question.host, "gateway.example");
  EXPECT_THAT(question.facts, ElementsAre(Fact{"Server", "https://gateway.example:8443"},
                                          Fact{"What the password is for", "St<U+202E>aff"}));
}

TEST(LogOnQuestionTest, AskedForIsWhatIsNotKnown) {
  const LogOnQuestion all = LogOnQuestion::Of({{"NeedsCode", true}, {"CanRemember", true}});
  EXPECT_TRUE(all.needsPassword);
  EXPECT_TRUE(all.needsCode);
  EXPECT_TRUE(all.canRemember);
  EXPECT_EQ(all.hint, "");

  const LogOnQuestion code =
      LogOnQuestion::Of({{"NeedsCode", true}, {"CanRemember", true}, {"KnownUserName", "mia"}});
  EXPECT_FALSE(code.needsPassword);
  EXPECT_TRUE(code.needsCode);
  EXPECT_FALSE(code.canRemember);
  EXPECT_EQ(code.hint, "Your user name and password are kept. A new code is needed.");
  EXPECT_THAT(code.facts, ElementsAre(Fact{"User name", "mia"}));
}

TEST(LogOnQuestionTest, BeginsWithTheUserNameOfTheAnswerThatWasNotAccepted) {
  EXPECT_EQ(LogOnQuestion::Of({{"WasRejected", true}, {"RejectedUserName", "mia"}}).userName, "mia");
  EXPECT_EQ(LogOnQuestion::Of({{"WasRejected", true}}).userName, "");
}

TEST(LogOnQuestionTest, SaysThatTheLastAnswerWasNotAccepted) {
  EXPECT_EQ(LogOnQuestion::Of({{"WasRejected", true}}).hint, "The last answer was not accepted.");
  EXPECT_EQ(LogOnQuestion::Of({{"WasRejected", false}}).hint, "");
}

}  // namespace
