#include "libs/Warden_SDK/ResponseLines.h"

#include <gtest/gtest.h>

namespace {

std::vector<Warden::ResponseLine> Usable(const std::vector<std::wstring>& lines) {
  std::vector<const wchar_t*> pointers;
  for (const std::wstring& line : lines) pointers.push_back(line.c_str());
  pointers.push_back(nullptr);
  return Warden::UsableLines(pointers.data());
}

TEST(ResponseLines, SplitsANameInLowerCaseFromItsValue) {
  const auto lines = Usable({L"WWW-Authenticate: \tBasic realm=\"a: b\" ", L"X-Empty:"});
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].name, "www-authenticate");
  EXPECT_EQ(lines[0].value, "Basic realm=\"a: b\"");
  EXPECT_EQ(lines[1].value, "");
}

TEST(ResponseLines, LeavesOutLinesWithLineBreaksAndControlCharacters) {
  EXPECT_TRUE(
      Usable({L"A: b\r\nAuthorization: c", L"A: b\nc", L"A: b\rc", L"A: \x1B[2J", L"A: \x7F"}).empty());
}

TEST(ResponseLines, LeavesOutLinesWithoutANameAndAColon) {
  EXPECT_TRUE(Usable({L"", L"WWW-Authenticate Basic", L": Basic", L"WWW Authenticate: Basic",
                      L" WWW-Authenticate: Basic", L"HTTP/1.1 401"})
                  .empty());
}

TEST(ResponseLines, LeavesOutLinesOver64KiB) {
  const std::wstring name = L"A:";
  EXPECT_EQ(Usable({name + std::wstring(65534, L'x')}).size(), 1U);
  EXPECT_TRUE(Usable({name + std::wstring(65535, L'x')}).empty());
  EXPECT_TRUE(Usable({name + std::wstring(40000, L'\u00FC')}).empty());
}

TEST(ResponseLines, StopsAfterAThousand) {
  EXPECT_EQ(Usable(std::vector<std::wstring>(1500, L"A: b")).size(), 1000U);
}

TEST(ResponseLines, AreNoneForNull) {
  EXPECT_TRUE(Warden::UsableLines(nullptr).empty());
}

}  // namespace
