#include "libs/Address/SendingForm.h"

#include <gtest/gtest.h>

namespace {

using Address::Reading;
using Address::SplitURL;

Address::SendingForm FormOf(const std::string& text) {
  const SplitURL own(text);
  return FormForSending(own, own.WithoutPage() + "/" + own.page.value_or(""));
}

TEST(SendingForm, AnAddressThatIsReadAlikeIsGivenAsItStands) {
  for (const char* text :
       {"https://store.example/Example/Main/discovery", "http://store.example:8080/a?b=c&d",
        "https://[::1]:444/x", "https://store.example/a%20b%2f", "https://store.example/a/../b/./c//d?e=../f",
        "https://store.example/a:b@c?d#e", "http://1.2.3.4:81/", "http://-_.a|b/"}) {
    const Address::SendingForm form = FormOf(text);
    EXPECT_EQ(form.reading, Reading::Same) << text;
    EXPECT_EQ(form.text, text);
  }
}

TEST(SendingForm, SchemesAreOnesOwn) {
  EXPECT_EQ(FormOf("ftps://h/p").text, "https://h/p");
  EXPECT_EQ(FormOf("ftp://h/p").text, "http://h/p");
  EXPECT_EQ(FormOf("h:8080/p").text, "http://h:8080/p");
}

TEST(SendingForm, AnEmptyPortIsTheDefaultOne) {
  EXPECT_EQ(FormOf("https://h:/p").text, "https://h/p");
  EXPECT_EQ(FormOf("h:/p").text, "http://h/p");
}

TEST(SendingForm, BlanksAndOtherCharactersAreEncoded) {
  EXPECT_EQ(FormOf("https://h/a b/\xC3\xBC?x y=1+2").text, "https://h/a%20b/%c3%bc?x%20y=1+2");
}

TEST(SendingForm, HostsMayDifferInCaseEncodingAndTheFormOfAnInternationalName) {
  EXPECT_EQ(FormOf("https://M\xC3\xBCnchen.Example/").text, "https://xn--mnchen-3ya.example/");
  EXPECT_EQ(FormOf("https://m%C3%BCnchen.example/").text, "https://xn--mnchen-3ya.example/");
  EXPECT_EQ(FormOf("https://st%6Fre.example/").text, "https://store.example/");
  EXPECT_EQ(FormOf("https://[2001:DB8:0:0:0:0:0:1]/").text, "https://[2001:db8::1]/");
}

TEST(SendingForm, AnAddressThatLeadsElsewhereIsNotSent) {
  for (const char* text :
       {"https://bank.example%2Fstores@evil.example/x", "https://me@h/p", "https://me:pw@h/p", "https://@h/p",
        "https://me:@h/p", "https://h?q=1", "https://h#part", "https://bank.example?@evil.example/",
        "https://bank.example#@evil.example/", "https://0x7f.1/", "https://2130706433/", "https://127.1/",
        "https://[fe80::1%25eth0]/", "https://h:080/", "https://h:0443/", "https://h%/", "https://h%zz/"}) {
    EXPECT_EQ(FormOf(text).reading, Reading::Other) << text;
    EXPECT_EQ(FormOf(text).text, "") << text;
  }
  EXPECT_EQ(FormOf(std::string("https://store.example\0.evil.example/", 36)).reading, Reading::Other);
  EXPECT_EQ(FormOf(std::string("https://h/a\0b", 13)).reading, Reading::Other);
}

// Their ASCII forms hold a slash, a colon, an at sign, a question mark, a percent sign.
TEST(SendingForm, AnInternationalNameThatEndsEarlyInItsASCIIFormIsNotSent) {
  for (const char* text :
       {"https://evil.example\xEF\xBC\x8F.bank.example/", "https://evil\xEF\xBC\x9A\x38\x30/",
        "https://bank.example\xEF\xBC\xA0\x65vil.example/", "https://evil.example\xEF\xBC\x9F.bank.example/",
        "https://\xE2\x84\x80.example/", "https://evil.example%EF%BC%8F.bank.example/",
        "https://bank.example%252eevil.example/"}) {
    EXPECT_NE(FormOf(text).reading, Reading::Same) << text;
    EXPECT_EQ(FormOf(text).text, "") << text;
  }
}

TEST(SendingForm, WhatIsNoAddressIsNotSent) {
  for (const char* text :
       {"", "https://", "https:///path", "https://two words/p", "https://h:99999/", "https://h:8x/",
        "https://h/a\nb", "https://h\r\n/", "https://a\\b/", "https://fe80::1/",
        "https://evil.example%2F.bank.example/", "https://m%FCnchen/", "127.0.0.1:81/s://localhost:G/d"}) {
    EXPECT_EQ(FormOf(text).reading, Reading::None) << text;
    EXPECT_EQ(FormOf(text).text, "") << text;
  }
}

TEST(SendingForm, TheReadingIsComparedWithTheOneThatWasShown) {
  EXPECT_EQ(FormForSending(SplitURL("https://bank.example/"), "https://evil.example/").reading,
            Reading::Other);
  EXPECT_EQ(FormForSending(SplitURL("https://h/"), "https://me@h/").reading, Reading::Other);
  EXPECT_EQ(FormForSending(SplitURL("https://h/"), "http://h:443/").reading, Reading::Other);
  EXPECT_EQ(FormForSending(SplitURL("https://h/"), "https://h:444/").reading, Reading::Other);
  EXPECT_EQ(FormForSending(SplitURL("https://h/"), "https://h:443/a").reading, Reading::Same);
}

}  // namespace
