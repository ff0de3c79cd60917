#include "libs/Files/Bundle.h"
#include "support/EnvironmentVariable.h"
#include "support/TemporaryFolder.h"
#include "support/TestFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::EnvironmentVariable;
using TestSupport::WriteFile;

class BundleTest : public testing::Test {
 protected:
  BundleTest() {
    WriteFile(folder_.Path() / "Info.plist",
              "<plist><dict><key>Text</key><string>text</string><key>Number</key><integer>1</integer></"
              "dict></plist>");
  }

  void AddLanguage(const std::string& language) {
    fs::create_directories(folder_.Path() / "Resources" / (language + ".lproj"));
  }

  [[nodiscard]] std::vector<std::string> Preferred() const {
    return Files::Bundle::WithPath(folder_.Path())->PreferredLocalizations();
  }

  TestSupport::TemporaryFolder folder_;
  EnvironmentVariable language_{"LANGUAGE", std::nullopt};
  EnvironmentVariable all_{"LC_ALL", std::nullopt};
  EnvironmentVariable messages_{"LC_MESSAGES", std::nullopt};
  EnvironmentVariable lang_{"LANG", std::nullopt};
};

TEST_F(BundleTest, StringsOfTheDescriptionAreFoundByName) {
  const auto bundle = Files::Bundle::WithPath(folder_.Path());
  ASSERT_TRUE(bundle);
  EXPECT_EQ(bundle->InfoString("Text"), "text");
  EXPECT_EQ(bundle->InfoString("Number"), "");
  EXPECT_EQ(bundle->InfoString("Missing"), "");
}

TEST_F(BundleTest, ResourcesAndPlugInsAreInsideTheFolder) {
  const auto bundle = Files::Bundle::WithPath(folder_.Path());
  ASSERT_TRUE(bundle);
  EXPECT_EQ(bundle->Path(), folder_.Path());
  EXPECT_EQ(bundle->ResourcesPath(), folder_.Path() / "Resources");
  EXPECT_EQ(bundle->BuiltInPlugInsPath(), folder_.Path() / "PlugIns");
}

TEST_F(BundleTest, AFolderWithoutAReadableDescriptionIsNoBundle) {
  EXPECT_FALSE(Files::Bundle::WithPath(folder_.Path() / "missing"));
  for (const char* content : {"", "garbage", "<plist><array/></plist>"}) {
    WriteFile(folder_.Path() / "Info.plist", content);
    EXPECT_FALSE(Files::Bundle::WithPath(folder_.Path())) << content;
  }
}

TEST_F(BundleTest, TheMainBundleIsTheFolderOfTheProgram) {
  EXPECT_EQ(Files::Bundle::Main().Path(), fs::read_symlink("/proc/self/exe").parent_path());
  EXPECT_EQ(Files::Bundle::Main().InfoString("CFBundleIdentifier"), "");
}

TEST_F(BundleTest, PreferredLanguagesAreThoseOfTheUserThatTheBundleHas) {
  for (const char* language : {"en", "de", "fr"}) AddLanguage(language);
  const EnvironmentVariable language("LANGUAGE", "it:de_AT:fr");
  const EnvironmentVariable lang("LANG", "en_GB.UTF-8");
  EXPECT_THAT(Preferred(), ElementsAre("de", "fr", "en"));
}

TEST_F(BundleTest, ARegionOfItsOwnComesBeforeItsLanguage) {
  for (const char* language : {"de", "de_AT"}) AddLanguage(language);
  const EnvironmentVariable lang("LANG", "de_AT.UTF-8@euro");
  EXPECT_THAT(Preferred(), ElementsAre("de_AT", "de"));
}

TEST_F(BundleTest, OnlyTheFirstLocaleThatIsSetCounts) {
  for (const char* language : {"en", "de", "fr"}) AddLanguage(language);
  const EnvironmentVariable lang("LANG", "en");
  {
    const EnvironmentVariable messages("LC_MESSAGES", "de_DE");
    EXPECT_THAT(Preferred(), ElementsAre("de"));
    const EnvironmentVariable all("LC_ALL", "fr_FR");
    EXPECT_THAT(Preferred(), ElementsAre("fr"));
  }
  EXPECT_THAT(Preferred(), ElementsAre("en"));
}

TEST_F(BundleTest, NoLanguageIsPreferredWithoutALocaleOrAFolder) {
  AddLanguage("en");
  EXPECT_THAT(Preferred(), IsEmpty());
  for (const char* locale : {"C", "C.UTF-8", "POSIX", "de", "../Resources/en", ""}) {
    const EnvironmentVariable lang("LANG", locale);
    EXPECT_THAT(Preferred(), IsEmpty()) << locale;
  }
}

}  // namespace
