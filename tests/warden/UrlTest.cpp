#include "Url.h"

#include <gtest/gtest.h>

namespace {

using Warden::Url;

std::string Text(const Url& url) {
  return url.scheme + "://" + url.authority + url.target;
}

Url ParsedUrl(const std::string& text) {
  return Url::Parse(text, "https").value_or(Url());
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

TEST(Url, TakesTheGivenSchemeForATextWithoutOne) {
  EXPECT_EQ(Text(ParsedUrl("gateway.example")), "https://gateway.example/");
  EXPECT_EQ(Text(Url::Parse("store.example/a://b", "http").value_or(Url())), "http://store.example/a://b");
}

TEST(Url, EncodesBlanksAndOtherLettersInTheTarget) {
  EXPECT_EQ(ParsedUrl("https://h/a b/\xC3\xBC").target, "/a%20b/%C3%BC");
}

TEST(Url, LeavesOutUserInformationAndFragment) {
  EXPECT_EQ(Text(ParsedUrl("https://user:pass@h/a#part")), "https://h/a");
  EXPECT_EQ(Text(ParsedUrl("https://h?x=1#part")), "https://h/?x=1");
}

TEST(Url, RefusesWhatIsNoWebAddress) {
  for (const char* text : {"", "ftp://h/", "https://", "https:///path", "https://h:0/", "https://h:99999/",
                           "https://h:8x/", "https://h/a\nb", "https://h\r\n/", "https://h i/"}) {
    EXPECT_FALSE(Url::Parse(text, "https")) << text;
  }
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
  EXPECT_EQ(Through("gw.example/", "http://store.example"), "https://gw.example/http/store.example/");
  EXPECT_EQ(Through("http://gw.example:81/front//", "https://store.example/a"),
            "http://gw.example:81/front/https/store.example/a");
}

TEST(Url, GoesThroughNoGatewayWithAQuery) {
  EXPECT_EQ(Through("https://gw.example/?a=b", "https://store.example/"), "none");
}

}  // namespace
