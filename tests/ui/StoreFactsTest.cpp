#include "ui/FactPrinting.h"
#include "view/StoreFacts.h"

#include <gmock/gmock.h>

#include <string>

// Without a translation the texts are as they stand in the code.
namespace {

using Dialogs::Fact;
using Dialogs::StoreFacts;
using PropertyList::Array;
using PropertyList::Dictionary;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

Dictionary Gateway(const std::string& name, const std::string& url, bool isDefault = false) {
  return {{"GatewayName", name}, {"GatewayURL", url}, {"IsDefault", isDefault}};
}

TEST(StoreFactsTest, TellWhichServerWasVerifiedWhoseItIsAndWhoSaysSo) {
  const StoreFacts facts = StoreFacts::Of({{"StoreName", "Sales"},
                                           {"StoreHost", "store.example"},
                                           {"VerifiedHost", "gateway.example"},
                                           {"VerifiedServer", "gateway"},
                                           {"StoreProvider", "Morvane"},
                                           {"CertificateName", "Root CA"}});

  EXPECT_EQ(facts.name, "Sales");
  EXPECT_EQ(facts.host, "store.example");
  EXPECT_EQ(facts.address, "");
  EXPECT_THAT(facts.verified,
              ElementsAre(Fact{"Default gateway", "gateway.example"}, Fact{"Operated by", "Morvane"},
                          Fact{"Certificate issued by", "Root CA"}));
}

TEST(StoreFactsTest, TheStoresOwnServerIsNamedAsThat) {
  const StoreFacts facts = StoreFacts::Of({{"VerifiedHost", "store.example"}, {"VerifiedServer", "store"}});
  EXPECT_THAT(facts.verified, ElementsAre(Fact{"The store’s own server", "store.example"}));
}

TEST(StoreFactsTest, ACertificateThatNamesNobodyIsSaidToDoSo) {
  const StoreFacts facts = StoreFacts::Of({{"StoreProvider", " "}, {"CertificateName", ""}});
  EXPECT_THAT(facts.verified, ElementsAre(Fact{"Operated by", "Not named in the certificate"},
                                          Fact{"Certificate issued by", "Not named in the certificate"}));
}

TEST(StoreFactsTest, AnOlderAgentsHostIsThatOfTheAddress) {
  const StoreFacts facts = StoreFacts::Of({{"StoreURL", "https://store.example:8443/path"}});

  EXPECT_EQ(facts.host, "store.example");
  EXPECT_EQ(facts.address, "https://store.example:8443/path");
  EXPECT_EQ(facts.hostASCII, "");
  EXPECT_THAT(facts.verified, IsEmpty());
  EXPECT_THAT(facts.gateways, IsEmpty());
}

TEST(StoreFactsTest, TheASCIIFormStandsWhereItDiffers) {
  EXPECT_EQ(StoreFacts::Of({{"StoreHost", "münchen.example"}, {"StoreHostASCII", "xn--mnchen-3ya.example"}})
                .hostASCII,
            "xn--mnchen-3ya.example");
  EXPECT_EQ(StoreFacts::Of({{"StoreHost", "a.example"}, {"StoreHostASCII", "a.example"}}).hostASCII, "");
}

TEST(StoreFactsTest, TheASCIIFormOfTheVerifiedHostStandsBelowItWhereItDiffers) {
  const auto verified = [](const char* ascii) {
    return StoreFacts::Of({{"VerifiedHost", "münchen.example"}, {"VerifiedHostASCII", ascii}}).verified;
  };
  EXPECT_THAT(verified("xn--mnchen\u200B-3ya.example"),
              ElementsAre(Fact{"Server", "münchen.example\nxn--mnchen<U+200B>-3ya.example"}));
  EXPECT_THAT(verified("münchen.example"), ElementsAre(Fact{"Server", "münchen.example"}));
}

TEST(StoreFactsTest, NoHostIsEverCut) {
  const std::string host = std::string(1000, 'a') + ".example";
  const StoreFacts facts = StoreFacts::Of({{"StoreHost", host},
                                           {"StoreHostASCII", "x" + host},
                                           {"VerifiedHost", host},
                                           {"StoreProvider", host},
                                           {"StoreGateways", Array{Gateway("Main", "https://" + host)}}});

  EXPECT_EQ(facts.host, host);
  EXPECT_EQ(facts.hostASCII, "x" + host);
  EXPECT_EQ(facts.verified[0].value, host);
  EXPECT_EQ(facts.verified[1].value, host);
  EXPECT_EQ(facts.gateways[0].value, "Main\nhttps://" + host);
}

TEST(StoreFactsTest, NothingThatSomebodyElseWroteIsHiddenOrReordered) {
  const std::string evil = "a\u202Eb";
  const std::string shown = "a<U+202E>b";
  const StoreFacts facts = StoreFacts::Of({{"StoreName", evil},
                                           {"StoreURL", evil},
                                           {"StoreHost", evil},
                                           {"StoreHostASCII", evil + "c"},
                                           {"VerifiedHost", evil},
                                           {"StoreProvider", evil},
                                           {"CertificateName", evil},
                                           {"StoreGateways", Array{Gateway(evil, evil + "c")}}});

  EXPECT_EQ(facts.name, shown);
  EXPECT_EQ(facts.host, shown);
  EXPECT_EQ(facts.address, shown);
  EXPECT_EQ(facts.hostASCII, shown + "c");
  for (const Fact& fact : facts.verified) EXPECT_EQ(fact.value, shown);
  EXPECT_EQ(facts.gateways[0].value, shown + "\n" + shown + "c");
}

TEST(StoreFactsTest, TheDefaultGatewayComesFirstAndTheOthersInTheirOrder) {
  const StoreFacts facts =
      StoreFacts::Of({{"StoreGateways", Array{Gateway("A", "https://a"), Gateway("B", "https://b"),
                                              Gateway("C", "https://c", true)}}});

  EXPECT_THAT(facts.gateways,
              ElementsAre(Fact{"Default gateway", "C\nhttps://c"}, Fact{"Other gateway", "A\nhttps://a"},
                          Fact{"Other gateway", "B\nhttps://b"}));
}

TEST(StoreFactsTest, ADefaultGatewayWithoutAddressIsListedAsThat) {
  const StoreFacts facts = StoreFacts::Of(
      {{"DefaultGatewayWithoutURL", "Main"}, {"StoreGateways", Array{Gateway("A", "https://a")}}});
  EXPECT_THAT(facts.gateways, ElementsAre(Fact{"Default gateway", "Main\nNo address"},
                                          Fact{"Other gateway", "A\nhttps://a"}));
}

TEST(StoreFactsTest, OfVeryManyGatewaysTheNumberIsTold) {
  Array gateways;
  for (int index = 0; index < 250; ++index) gateways.emplace_back(Gateway("G", "https://g"));
  const StoreFacts facts = StoreFacts::Of({{"StoreGateways", gateways}});

  ASSERT_THAT(facts.gateways, SizeIs(101));
  EXPECT_EQ(facts.gateways.back().value, "\u2068150\u2069 more");
}

}  // namespace
