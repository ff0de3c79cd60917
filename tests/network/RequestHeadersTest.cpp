#include "MacSRHTTPRequest.h"
#include "Network/RequestHeaders.h"
#include "support/RawServer.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

// What the server receives between "Accept" and the blank line.
std::string AddedLines(const std::wstring& extraHeaders) {
  const TestSupport::RawServer server({TestSupport::kEmptyAnswer});
  ServiceRecords::MacSRHTTPRequest request(server.Address() + L"/discovery");
  EXPECT_TRUE(request.SendHTTPRequest(extraHeaders));
  const std::string received = server.Requests().at(0);
  const std::string expectedStart =
      "GET /discovery HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.Port()) +
      "\r\nAccept: text/xml,application/xml\r\n";
  EXPECT_EQ(received.substr(0, expectedStart.size()), expectedStart);
  EXPECT_TRUE(received.ends_with("\r\n\r\n"));
  return received.substr(expectedStart.size(), received.size() - expectedStart.size() - 2);
}

TEST(RequestHeaders, AddNothingButAcceptForAnEmptyBlock) {
  EXPECT_EQ(AddedLines(L""), "");
}

TEST(RequestHeaders, KeepEachValueAsItIs) {
  EXPECT_EQ(AddedLines(L"A: 1\r\nB:2\r\n"), "A: 1\r\nB:2\r\n");
  EXPECT_EQ(AddedLines(L"Link: <http://a:1/>;b\r\n"), "Link: <http://a:1/>;b\r\n");
}

TEST(RequestHeaders, LeaveOutTheTextAfterTheLastLineEnd) {
  EXPECT_EQ(AddedLines(L"A: 1\r\nB:2"), "A: 1\r\n");
  EXPECT_EQ(AddedLines(L"A: 1"), "");
}

TEST(RequestHeaders, AccumulateRepeatedNames) {
  EXPECT_EQ(AddedLines(L"A: 1\r\nA: 2\r\nAccept: text/plain\r\n"), "A: 1\r\nA: 2\r\nAccept: text/plain\r\n");
}

TEST(RequestHeaders, SendAHeaderWhoseValueIsEmpty) {
  EXPECT_EQ(AddedLines(L"A:\r\nB: \r\nC: 3\r\n"), "A:\r\nB:\r\nC: 3\r\n");
}

TEST(RequestHeaders, LeaveOutLinesWithoutANameAndAColon) {
  EXPECT_EQ(AddedLines(L"nothing\r\n\r\n: value\r\nC: 3\r\n"), "C: 3\r\n");
}

TEST(RequestHeaders, LeaveOutLinesThatCouldPassForSeveral) {
  EXPECT_EQ(AddedLines(L"A: 1\nEvil: yes\r\nB: 2\rEvil: yes\r\nC: 3\r\n"), "C: 3\r\n");
  EXPECT_EQ(AddedLines(std::wstring(L"A: 1\0Evil\r\nC: 3\r\n", 18)), "C: 3\r\n");
}

TEST(RequestHeaders, LeaveOutLinesThatCouldContinueTheOneBefore) {
  EXPECT_EQ(AddedLines(L"A: 1\r\n Evil: yes\r\n\tEvil: yes\r\nC: 3\r\n"), "A: 1\r\nC: 3\r\n");
}

TEST(RequestHeaders, LeaveOutAnEmptyValueWhoseNameHoldsASemicolon) {
  EXPECT_EQ(AddedLines(L"A;B:\r\nA;: \r\nA;B: 1\r\n"), "A;B: 1\r\n");
}

TEST(RequestHeaders, AreSentInUTF8) {
  EXPECT_EQ(AddedLines(L"A: Zürich\r\n"), "A: Z\xC3\xBCrich\r\n");
}

}  // namespace
