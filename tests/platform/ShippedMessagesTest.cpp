#include "ResourceKeeper.h"
#include "SRLib/Platform/Messages.h"
#include "libs/Text/TextHelpers.h"
#include "support/CapturedSystemLog.h"
#include "support/EnvironmentVariable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(ShippedMessagesTest, EveryMessageOfTheCoreHasATextThatTakesItsArguments) {
  ResourceKeeper keeper(SR_SOURCE_DIR "/resources", [] { return std::vector<std::string>{"en"}; });
  const std::pair<int, int> messages[] = {{util::kMessageNotAServiceRecord, 0},
                                          {util::kMessageStoreTitle, 0},
                                          {util::kMessageDiscoveryTitle, 0},
                                          {util::kMessageNotADiscoveryDocument, 0},
                                          {util::kMessageDiscoveryConnectionFailed, 0},
                                          {util::kMessageServerNotContacted, 1},
                                          {util::kMessageEmptyHostName, 1},
                                          {util::kMessageCertificatesNotFetched, 1},
                                          {util::kMessageStoresNotRead, 0},
                                          {util::kReasonListNotWritten, 0},
                                          {util::kReasonListNotRead, 0},
                                          {util::kReasonListFull, 0},
                                          {util::kReasonExpired, 1},
                                          {util::kReasonNotYetValid, 1},
                                          {util::kReasonOtherHost, 1},
                                          {util::kReasonUnknownIssuer, 1},
                                          {util::kReasonRevoked, 0},
                                          {util::kReasonNoCommonProtocol, 0},
                                          {util::kReasonNoTls, 0},
                                          {util::kReasonNotReached, 0},
                                          {util::kReasonNotSecured, 0},
                                          {util::kReasonCouldNotAsk, 0},
                                          {util::kReasonIssuerExpired, 1},
                                          {util::kReasonIssuerNotYetValid, 1},
                                          {util::kReasonBrokenOff, 0},
                                          {util::kReasonNotRead, 0},
                                          {util::kReasonUnusableName, 0},
                                          {util::kReasonInList, 0},
                                          {util::kReasonNoFile, 0},
                                          {util::kReasonNotPermitted, 0},
                                          {util::kReasonNoDocument, 0},
                                          {util::kReasonReadingFailed, 1},
                                          {util::kReasonNoHost, 0},
                                          {util::kReasonNamelessIssuer, 0},
                                          {util::kNoticeAdded, 1},
                                          {util::kNoticeReplaced, 1},
                                          {util::kNoticeSeveralAdded, 1},
                                          {util::kNoticeShow, 0},
                                          {util::kNoticeNotOpened, 1},
                                          {util::kNoticeNotRead, 1},
                                          {util::kNoticeUnsaved, 1},
                                          {util::kNoticeSeveralUnsaved, 1}};
  for (const auto& [id, arguments] : messages) {
    const std::string text = keeper.messageFromResource(id);
    EXPECT_FALSE(text.starts_with("Failed to find")) << id;
    int found = 0;
    for (std::size_t at = 0; (at = text.find("%S", at)) != std::string::npos; ++at) ++found;
    EXPECT_EQ(found, arguments) << text;
  }
}

TEST(ShippedMessagesTest, WhatSomebodyElseWroteStandsOnALineOfItsOwn) {
  for (const char* language : {"en", "de"}) {
    ResourceKeeper keeper(SR_SOURCE_DIR "/resources", [&] { return std::vector<std::string>{language}; });
    for (const int id : {util::kMessageServerNotContacted, util::kMessageEmptyHostName,
                         util::kMessageCertificatesNotFetched}) {
      EXPECT_THAT(keeper.messageFromResource(id), testing::HasSubstr(":\n%S\n"));
    }
    for (const int id : {util::kReasonOtherHost, util::kReasonUnknownIssuer}) {
      EXPECT_THAT(keeper.messageFromResource(id), testing::EndsWith(":\n%S"));
    }
  }
}

TEST(ShippedMessagesTest, TheMessageThatIsAlsoTracedIsOneLine) {
  ResourceKeeper keeper(SR_SOURCE_DIR "/resources", [] { return std::vector<std::string>{"en"}; });
  EXPECT_EQ(keeper.messageFromResource(util::kMessageNotAServiceRecord).find('\n'), std::string::npos);
}

TEST(MessageFromResourceTest, APointerStaysGoodWhileTheTextIsTheSame) {
  const wchar_t* const first = util::MessageFromResourceW(999999);
  EXPECT_EQ(std::wstring(first), L"Failed to find resource name for id: f423f");
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([first] { EXPECT_EQ(util::MessageFromResourceW(999999), first); });
  }
}

TEST(MessageFromResourceTest, TheTextIsThatOfTheApplicationsCatalogue) {
  const TestSupport::EnvironmentVariable languages("LANGUAGE", std::nullopt);
  const TestSupport::EnvironmentVariable locale("LC_ALL", "en_GB.UTF-8");
  TestSupport::CapturedSystemLog systemLog;
  EXPECT_EQ(util::MessageFromResourceW(util::kMessageStoreTitle),
            std::wstring(L"Setting up the store was not completed"));
  EXPECT_THAT(systemLog.TakeLines(), testing::IsEmpty());
}

}  // namespace
