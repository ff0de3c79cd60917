#include "SRLib/Gen_URL.h"
#include "libs/Warden_SDK/Url.h"
#include "support/GeneratedAddresses.h"

#include <gtest/gtest.h>

namespace {

using Warden::Url;

std::string Text(const Url& url) {
  return url.scheme + "://" + url.authority + url.target;
}

Url ParsedUrl(const std::string& text) {
  return Url::Parse(text).value_or(Url());
}

std::string Through(const std::string& gateway, const std::string& store) {
  const std::optional<Url> url = Warden::ThroughGateway(ParsedUrl(gateway), ParsedUrl(store));
  return url ? Text(*url) : "none";
}

TEST(Url, KeepsAPlainUrlAsItIs) {
  for (const char* text :
       {"https://store.example/Example/Main/discovery", "http://store.example:8080/a?b=c&d",
        "https://[::1]:444/x", "https://store.example/a%20b", "https://store.example/a/../b/./c//d?e=../f"}) {
    EXPECT_EQ(Text(ParsedUrl(text)), text);
  }
}

TEST(Url, TakesTheSchemeByTheRulesForAllAddresses) {
  EXPECT_EQ(Text(ParsedUrl("gateway.example")), "http://gateway.example/");
  EXPECT_EQ(Text(ParsedUrl("HTTPS://gateway.example/a")), "https://gateway.example/a");
  EXPECT_EQ(Text(ParsedUrl("ftps://gateway.example/a")), "https://gateway.example/a");
  EXPECT_EQ(Text(ParsedUrl("ftp://gateway.example/a")), "http://gateway.example/a");
  EXPECT_EQ(Text(ParsedUrl("127.0.0.1:81/s://localhost:82/d")), "https://localhost:82/d");
}

TEST(Url, EncodesBlanksAndOtherLettersInTheTarget) {
  EXPECT_EQ(ParsedUrl("https://h/a b/\xC3\xBC").target, "/a%20b/%C3%BC");
}

TEST(Url, LeavesOutTheFragmentOfAPage) {
  EXPECT_EQ(Text(ParsedUrl("https://h/a?x=1#part")), "https://h/a?x=1");
}

TEST(Url, RefusesWhatCannotBeAskedFor) {
  for (const char* text : {"", "https://", "https:///path", "https://h:99999/", "https://h:8x/",
                           "https://h/a\nb", "https://h\r\n/", "https://h i/"}) {
    EXPECT_FALSE(Url::Parse(text)) << text;
  }
}

TEST(Url, RefusesWhatLeadsElsewhereThanItShows) {
  for (const char* text : {"https://user:pass@h/a", "https://bank.example%2Fstores@evil.example/",
                           "https://h?x=1", "https://h#part", "https://h:0443/", "https://0x7f.1/"}) {
    EXPECT_FALSE(Url::Parse(text)) << text;
  }
}

TEST(Url, ReadsGeneratedAddressesAsTheyAreShown) {
  TestSupport::GeneratedAddresses addresses;
  int taken = 0;
  for (int i = 0; i < 100'000; ++i) {
    const std::string text = addresses.Next();
    const std::optional<Url> url = Url::Parse(text);
    if (!url) continue;
    ++taken;
    const Gen_URL shown(text);
    const Gen_URL sent(Text(*url));
    ASSERT_EQ(sent.GetServer(), shown.GetServer()) << text;
    ASSERT_EQ(url->host, shown.GetServer()) << text;
    ASSERT_EQ(sent.GetPagelessURL() + (shown.GetPagelessURL().ends_with(':') ? ":" : ""),
              shown.GetPagelessURL())
        << text;
  }
  EXPECT_GT(taken, 10'000);
}

TEST(Url, NamesAServerInLowerCaseWithoutItsDefaultPort) {
  EXPECT_EQ(ParsedUrl("HTTPS://Store.Example:443/").ServerKey(), "store.example");
  EXPECT_EQ(ParsedUrl("https://store.example:80/").ServerKey(), "store.example:80");
  EXPECT_EQ(ParsedUrl("http://store.example:80/").ServerKey(), "store.example");
  EXPECT_EQ(ParsedUrl("https://[::1]:443/").ServerKey(), "[::1]");
}

TEST(Url, NamesTheHostWithoutPortAndBrackets) {
  EXPECT_EQ(ParsedUrl("https://store.example:8443/").Host(), "store.example");
  EXPECT_EQ(ParsedUrl("https://[::1]:8443/").Host(), "::1");
}

TEST(Url, GoesThroughAGatewayByItsRewritingScheme) {
  EXPECT_EQ(Through("https://gw.example", "https://store.example:8443/a/b?c=d"),
            "https://gw.example/https/store.example:8443/a/b?c=d");
  EXPECT_EQ(Through("gw.example/", "http://store.example:80"), "http://gw.example/http/store.example/");
  EXPECT_EQ(Through("http://gw.example:81/front//", "https://store.example/a"),
            "http://gw.example:81/front/https/store.example/a");
}

TEST(Url, GoesThroughNoGatewayWithAQuery) {
  EXPECT_EQ(Through("https://gw.example/?a=b", "https://store.example/"), "none");
}

}  // namespace
