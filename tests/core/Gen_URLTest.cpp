#include "SRLib/Gen_URL.h"

#include <gtest/gtest.h>

namespace {

struct UrlCase {
  const char* name;
  const char* url;
  bool secure;
  const char* server;
  const char* pageless;
  const char* whole;
};

void PrintTo(const UrlCase& tested, std::ostream* stream) {
  *stream << tested.url;
}

class Gen_URLTest : public ::testing::TestWithParam<UrlCase> {};

TEST_P(Gen_URLTest, SplitsAndRebuildsByTheSimpleRules) {
  Gen_URL url(GetParam().url);
  EXPECT_EQ(url.IsSecure(), GetParam().secure);
  EXPECT_EQ(url.GetServer(), GetParam().server);
  EXPECT_EQ(url.GetPagelessURL(), GetParam().pageless);
  EXPECT_EQ(url.GetURL(), GetParam().whole);
  EXPECT_EQ(url.GetURL(), GetParam().whole);
  EXPECT_EQ(url.GetDisplayURL(), GetParam().whole);
}

constexpr UrlCase kCases[] = {
    {"DefaultSecurePort", "https://h:443/a/b", true, "h", "https://h", "https://h/a/b"},
    {"DefaultPlainPort", "http://h:80/a", false, "h", "http://h", "http://h/a"},
    {"OtherProtocolsPort", "https://h:80/a", true, "h", "https://h:80", "https://h:80/a"},
    {"PlainOnSecurePort", "http://h:443/a", false, "h", "http://h:443", "http://h:443/a"},
    {"NoScheme", "host:8080/p", false, "host", "http://host:8080", "http://host:8080/p"},
    {"NoPage", "https://h", true, "h", "https://h", "https://h/No Page"},
    {"EmptyPage", "https://h/", true, "h", "https://h", "https://h/"},
    {"Empty", "", false, "No Server", "http://No Server", "http://No Server/No Page"},
    {"TwoCharacters", "ab", false, "ab", "http://ab", "http://ab/No Page"},
    {"SeparatorAlone", "://", false, "No Server", "http://No Server", "http://No Server/No Page"},
    {"SeparatorAtTheStart", "://h/p", false, "h", "http://h", "http://h/p"},
    {"UpperCaseScheme", "HTTPS://Host/P", true, "Host", "https://Host", "https://Host/P"},
    {"SchemeEndingInS", "ftps://h/p", true, "h", "https://h", "https://h/p"},
    {"SchemeNotEndingInS", "ftp://h/p", false, "h", "http://h", "http://h/p"},
    {"SecondSeparatorInPage", "h/s://x", true, "x", "https://x", "https://x/No Page"},
    {"BracketedAddressWithPort", "https://[fe80::1]:8443/p", true, "[fe80::1]", "https://[fe80::1]:8443",
     "https://[fe80::1]:8443/p"},
    {"BracketedAddressWithoutPort", "https://[fe80::1]/p", true, "[fe80::1]", "https://[fe80::1]",
     "https://[fe80::1]/p"},
    {"BareAddressWithoutPort", "fe80::1/p", false, "fe80::1", "http://fe80::1", "http://fe80::1/p"},
    {"BareFullAddress", "1:2:3:4:5:6:7:8/p", false, "1:2:3:4:5:6:7:8", "http://1:2:3:4:5:6:7:8",
     "http://1:2:3:4:5:6:7:8/p"},
    {"BareFullAddressWithPort", "1:2:3:4:5:6:7:8:99/p", false, "1:2:3:4:5:6:7:8", "http://1:2:3:4:5:6:7:8:99",
     "http://1:2:3:4:5:6:7:8:99/p"},
    {"NineColons", "1:2:3:4:5:6:7:8:9:10/p", false, "1:2:3:4:5:6:7:8:9:10", "http://1:2:3:4:5:6:7:8:9:10",
     "http://1:2:3:4:5:6:7:8:9:10/p"},
    {"NineColonsWithBracket", "[1:2:3:4:5:6:7:8:9]:10/p", false, "[1:2:3:4:5:6:7:8:9]",
     "http://[1:2:3:4:5:6:7:8:9]:10", "http://[1:2:3:4:5:6:7:8:9]:10/p"},
    {"EightColonsWithBracketBehind", "[1:2:3:4:5:6:7:8:9]/p", false, "[1:2:3:4:5:6:7:8",
     "http://[1:2:3:4:5:6:7:8:9]", "http://[1:2:3:4:5:6:7:8:9]/p"},
    {"ColonOnlyInPage", "h/a:b", false, "h", "http://h", "http://h/a:b"},
    {"UserInformation", "https://me@h/p", true, "me@h", "https://me@h", "https://me@h/p"},
    {"UserInformationWithPassword", "https://me:pw@h/p", true, "me", "https://me:pw@h", "https://me:pw@h/p"},
    {"QueryWithoutSlash", "https://h?q=1", true, "h?q=1", "https://h?q=1", "https://h?q=1/No Page"},
    {"TrailingColon", "https://h:/p", true, "h", "https://h:", "https://h:/p"},
    {"PortWithoutServer", "https://:8443/p", true, "No Server", "https://No Server:8443",
     "https://No Server:8443/p"},
    {"OneSlash", "/", false, "No Server", "http://No Server", "http://No Server/"},
};

INSTANTIATE_TEST_SUITE_P(Urls, Gen_URLTest, ::testing::ValuesIn(kCases),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(Gen_URLDisplayTest, TheConfigurationPageIsHiddenFromTheUserAndRequestedAllTheSame) {
  Gen_URL url("https://h/Morvane/Brisk/config.xml");
  EXPECT_EQ(url.GetDisplayURL(), "https://h");
  EXPECT_EQ(url.GetURL(), "https://h/Morvane/Brisk/config.xml");
}

TEST(Gen_URLDisplayTest, APageThatIsAlmostTheConfigurationPageIsShown) {
  EXPECT_EQ(Gen_URL("https://h/morvane/Brisk/config.xml").GetDisplayURL(),
            "https://h/morvane/Brisk/config.xml");
  EXPECT_EQ(Gen_URL("https://h/Morvane/Brisk/config.xml?").GetDisplayURL(),
            "https://h/Morvane/Brisk/config.xml?");
}

}  // namespace
