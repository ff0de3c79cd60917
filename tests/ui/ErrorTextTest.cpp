#include "view/ErrorText.h"

#include <gmock/gmock.h>

namespace {

using Dialogs::ErrorText;
using PropertyList::Dictionary;

TEST(ErrorTextTest, OfAnOlderAgentThereAreTitleAndMessage) {
  const ErrorText text = ErrorText::Of({{"ErrorTitle", "Bad file"}, {"ErrorMessage", "One.\nTwo."}});

  EXPECT_EQ(text.title, "Bad file");
  EXPECT_EQ(text.message, "One.\nTwo.");
  EXPECT_EQ(text.reason, "");
  EXPECT_EQ(text.store, "");
  EXPECT_EQ(text.server, "");
  EXPECT_EQ(text.file, "");
  EXPECT_EQ(text.ForCopying(), "Bad file\nOne.\nTwo.\n");
}

TEST(ErrorTextTest, WhatIsCopiedIsAllThatIsKnown) {
  const ErrorText text = ErrorText::Of({{"ErrorTitle", "Not verified"},
                                        {"ErrorMessage", "The server:\nhttps://a.example"},
                                        {"ErrorReason", "It expired."},
                                        {"StoreName", "Sales"},
                                        {"Server", "a.example:443"},
                                        {"DocumentPath", "/home/mia/a.cr"},
                                        {"ErrorDetails", "code 10\ndepth 0"}});

  EXPECT_EQ(text.ForCopying(),
            "Not verified\nThe server:\nhttps://a.example\nIt expired.\nStore: Sales\nServer: a.example:443\n"
            "File: /home/mia/a.cr\ncode 10\ndepth 0\n");
}

TEST(ErrorTextTest, WhatSomebodyElseWroteStaysOnItsLineOfTheReason) {
  const ErrorText text = ErrorText::Of({{"ErrorReason", "Issued by:\n\u05D0\u05D1\u05D2 12 example.com"}});

  EXPECT_EQ(text.reason, "Issued by:\n\u05D0\u05D1\u05D2 12 example.com");
}

TEST(ErrorTextTest, NothingThatSomebodyElseWroteIsHiddenOrReordered) {
  const ErrorText text = ErrorText::Of({{"ErrorTitle", "a\u202Eb"},
                                        {"ErrorMessage", "a\u202Eb"},
                                        {"ErrorReason", "a\u202Eb"},
                                        {"StoreName", "a\u202Eb"},
                                        {"Server", "a\u202Eb"},
                                        {"DocumentPath", "a\nb"},
                                        {"ErrorDetails", "a\u202Eb"}});

  for (const std::string& shown :
       {text.title, text.message, text.reason, text.store, text.server, text.details}) {
    EXPECT_EQ(shown, "a<U+202E>b");
  }
  EXPECT_EQ(text.file, "a<U+000A>b");
}

}  // namespace
