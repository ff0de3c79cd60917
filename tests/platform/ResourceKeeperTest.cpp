#include "ResourceKeeper.h"
#include "libs/Text/TextHelpers.h"
#include "support/CapturedSystemLog.h"
#include "support/TemporaryFolder.h"
#include "support/TestFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::WriteFile;

std::string Block(const std::string& name, const std::string& text) {
  return "MessageId=1\nSymbolicName=" + name + "\nLanguage        =English\n" + text + "\n.\n";
}

class ResourceKeeperTest : public testing::Test {
 protected:
  ResourceKeeperTest() {
    WriteTable("1600 = TITLE\n1624 =  \tREACHED \n");
    WriteMessages("en", Block("TITLE", "The title") + Block("REACHED", "First line\nsecond line"));
  }

  void WriteTable(const std::string& content) { WriteFile(folder_.Path() / "MessagesIdName.txt", content); }
  void WriteMessages(const std::string& language, const std::string& content) {
    WriteFile(folder_.Path() / (language + ".lproj") / "Messages.mc", content);
  }

  TestSupport::CapturedSystemLog systemLog_;
  TestSupport::TemporaryFolder folder_;
  std::vector<std::string> languages_{"en"};
  ResourceKeeper keeper_{folder_.Path(), [this] { return languages_; }};
};

TEST_F(ResourceKeeperTest, AMessageIsFoundByItsNumber) {
  EXPECT_EQ(keeper_.messageFromResource(1600), "The title");
}

TEST_F(ResourceKeeperTest, InnerLineEndsOfAMessageAreKept) {
  EXPECT_EQ(keeper_.messageFromResource(1624), "First line\nsecond line");
}

TEST_F(ResourceKeeperTest, TheMostPreferredLanguageIsUsed) {
  WriteMessages("de", Block("TITLE", "Der Titel"));
  languages_ = {"de", "en"};
  EXPECT_EQ(keeper_.messageFromResource(1600), "Der Titel");
}

TEST_F(ResourceKeeperTest, WithoutAPreferredLanguageItIsEnglish) {
  languages_.clear();
  EXPECT_EQ(keeper_.messageFromResource(1600), "The title");
}

TEST_F(ResourceKeeperTest, ALanguageWithoutMessagesUsesTheEnglishOnes) {
  languages_ = {"fr"};
  EXPECT_EQ(keeper_.messageFromResource(1600), "The title");
  WriteMessages("it", "");
  languages_ = {"it"};
  EXPECT_EQ(keeper_.messageFromResource(1600), "The title");
}

TEST_F(ResourceKeeperTest, ANameMissingInTheLanguagesFileIsNotLookedUpInTheEnglishOne) {
  WriteMessages("de", Block("OTHER", "Anderes"));
  languages_ = {"de"};
  EXPECT_EQ(keeper_.messageFromResource(1600), "Failed to find localized message for resource name: TITLE");
}

TEST_F(ResourceKeeperTest, AMissingEnglishFileExplainsItselfWithTheName) {
  fs::remove_all(folder_.Path() / "en.lproj");
  EXPECT_EQ(keeper_.messageFromResource(1600), "Failed to find localized message for resource name: TITLE");
}

TEST_F(ResourceKeeperTest, AnUnknownNumberExplainsItselfInHexadecimal) {
  WriteTable("1 = ONE\n");
  EXPECT_EQ(keeper_.messageFromResource(1600), "Failed to find resource name for id: 640");
  EXPECT_EQ(keeper_.messageFromResource(-1), "Failed to find resource name for id: ffffffff");
  fs::remove(folder_.Path() / "MessagesIdName.txt");
  EXPECT_EQ(keeper_.messageFromResource(1610), "Failed to find resource name for id: 64a");
}

TEST_F(ResourceKeeperTest, AFoundMessageLeavesTheSystemLogAlone) {
  EXPECT_EQ(keeper_.messageFromResource(1600), "The title");
  EXPECT_THAT(systemLog_.TakeLines(), IsEmpty());
}

TEST_F(ResourceKeeperTest, AnUnknownNumberIsOneLineOfTheSystemLog) {
  EXPECT_EQ(keeper_.messageFromResource(5), "Failed to find resource name for id: 5");
  EXPECT_THAT(systemLog_.TakeLines(), ElementsAre("Failed to find resource name for id: 5"));
}

TEST_F(ResourceKeeperTest, AnUnknownNameIsOneLineOfTheSystemLog) {
  WriteTable("1600 = OTHER\n");
  EXPECT_EQ(keeper_.messageFromResource(1600), "Failed to find localized message for resource name: OTHER");
  EXPECT_THAT(systemLog_.TakeLines(),
              ElementsAre("Failed to find localized message for resource name: OTHER"));
}

TEST_F(ResourceKeeperTest, AMissingTableIsALineOfItsOwnBeforeTheFailure) {
  fs::remove(folder_.Path() / "MessagesIdName.txt");
  EXPECT_EQ(keeper_.messageFromResource(1600), "Failed to find resource name for id: 640");
  EXPECT_THAT(systemLog_.TakeLines(),
              ElementsAre("Failed to read MessagesIdName.txt file. Error: No such file or directory",
                          "Failed to find resource name for id: 640"));
}

TEST_F(ResourceKeeperTest, AMissingFileOfTheLanguageIsLoggedAndTheEnglishTextUsed) {
  languages_ = {"fr"};
  EXPECT_EQ(keeper_.messageFromResource(1600), "The title");
  EXPECT_THAT(
      systemLog_.TakeLines(),
      ElementsAre("Failed to read Messages.mc file for locale: fr. Error: No such file or directory"));
}

TEST_F(ResourceKeeperTest, ALastLineOfTheTableWithoutANewlineIsNotFound) {
  WriteTable("1 = ONE\n1600 = TITLE");
  EXPECT_EQ(keeper_.messageFromResource(1600), "Failed to find resource name for id: 640");
}

TEST_F(ResourceKeeperTest, TheFirstLineThatEndsInTheNumberWins) {
  WriteTable("11600 = REACHED\n1600 = TITLE\n");
  EXPECT_EQ(keeper_.messageFromResource(1600), "First line\nsecond line");
}

TEST_F(ResourceKeeperTest, ASecondLookUpReadsNoFile) {
  EXPECT_EQ(keeper_.messageFromResource(1600), "The title");
  fs::remove_all(folder_.Path() / "en.lproj");
  fs::remove(folder_.Path() / "MessagesIdName.txt");
  EXPECT_EQ(keeper_.messageFromResource(1600), "The title");
}

TEST_F(ResourceKeeperTest, AnotherLanguageEmptiesTheCache) {
  WriteMessages("de", Block("TITLE", "Der Titel"));
  EXPECT_EQ(keeper_.messageFromResource(1600), "The title");
  languages_ = {"de"};
  EXPECT_EQ(keeper_.messageFromResource(1600), "Der Titel");
  WriteMessages("en", Block("TITLE", "The new title"));
  languages_ = {"en"};
  EXPECT_EQ(keeper_.messageFromResource(1600), "The new title");
}

TEST_F(ResourceKeeperTest, NoTextOfTheOldLanguageIsLeft) {
  WriteMessages("de", Block("TITLE", "Der Titel") + Block("REACHED", "Erreicht"));
  EXPECT_EQ(keeper_.messageFromResource(1600), "The title");
  EXPECT_EQ(keeper_.messageFromResource(1624), "First line\nsecond line");
  languages_ = {"de"};
  EXPECT_EQ(keeper_.messageFromResource(1600), "Der Titel");
  EXPECT_EQ(keeper_.messageFromResource(1624), "Erreicht");
}

TEST_F(ResourceKeeperTest, FailuresAreNotKept) {
  const std::string table = TestSupport::ReadFile(folder_.Path() / "MessagesIdName.txt");
  fs::remove(folder_.Path() / "MessagesIdName.txt");
  EXPECT_EQ(keeper_.messageFromResource(1600), "Failed to find resource name for id: 640");
  WriteTable(table);
  EXPECT_EQ(keeper_.messageFromResource(1600), "The title");
}

TEST_F(ResourceKeeperTest, ABlockThatIsIncompleteHasNoMessage) {
  const char* const contents[] = {"SymbolicName=TITLE\nThe title\n.\n",
                                  "SymbolicName=TITLE\nLanguage        =English\nThe title\n",
                                  "SymbolicName=TITLE\nLanguage =English\nThe title\n.\n",
                                  "SymbolicName=TITLE\nLanguage        =English\n.\n",
                                  "SymbolicName=TITLE\nLanguage        =English\n\n.\n",
                                  "SymbolicName=title\nLanguage        =English\nThe title\n.\n"};
  for (const char* content : contents) {
    WriteMessages("en", content);
    EXPECT_EQ(keeper_.messageFromResource(1600), "Failed to find localized message for resource name: TITLE")
        << content;
  }
}

TEST_F(ResourceKeeperTest, TheCaseOfTheLanguageMarkDoesNotMatter) {
  WriteMessages("en", "SymbolicName=TITLE\nLANGUAGE        =English\nThe title\n.\n");
  EXPECT_EQ(keeper_.messageFromResource(1600), "The title");
}

TEST_F(ResourceKeeperTest, FilesMayBeInAnyUnicodeEncodingWithAMark) {
  const std::wstring text = util::widen(Block("TITLE", "Gr\xC3\xBC\xC3\x9F\x65 \xF0\x9F\x98\x80"));
  std::string little = "\xFF\xFE";
  std::string big = "\xFE\xFF";
  const auto append = [&](unsigned unit) {
    little += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    big += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
  };
  for (const wchar_t wide : text) {
    const auto character = static_cast<unsigned>(wide);
    if (character < 0x10000) {
      append(character);
    } else {
      append(0xD800 + ((character - 0x10000) >> 10));
      append(0xDC00 + ((character - 0x10000) & 0x3FF));
    }
  }
  for (const std::string& content : {little, big, "\xEF\xBB\xBF" + util::narrow(text)}) {
    ResourceKeeper keeper(folder_.Path(), [] { return std::vector<std::string>{"en"}; });
    WriteMessages("en", content);
    EXPECT_EQ(keeper.messageFromResource(1600), "Gr\xC3\xBC\xC3\x9F\x65 \xF0\x9F\x98\x80");
  }
}

TEST_F(ResourceKeeperTest, AFileInAnotherEncodingCountsAsUnreadable) {
  for (const std::string& content : {Block("TITLE",
                                           "Gr\xFC\xDF"
                                           "e"),
                                     std::string("\xFF\xFE\x00\xD8", 4)}) {
    WriteMessages("en", content);
    EXPECT_EQ(keeper_.messageFromResource(1600), "Failed to find localized message for resource name: TITLE");
  }
}

TEST_F(ResourceKeeperTest, ThreadsMayLookUpAtTheSameTime) {
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([this] { EXPECT_EQ(keeper_.messageFromResource(1600), "The title"); });
  }
}

}  // namespace
