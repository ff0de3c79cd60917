#include "core/BoundsTest.h"

namespace {

using namespace TestSupport;

class AttributeValueBoundsTest : public BoundsTest {
 protected:
  static std::wstring Expanding(std::size_t times, const std::wstring& entity) {
    return Declaring(L"<!ENTITY e '" + entity + L"'>", L"<Services a='" + Repeated(L"&e;", times) + L"'/>");
  }

  // A default value of so many characters for so many elements.
  static std::wstring Defaulting(std::size_t characters, std::size_t elements) {
    return Declaring(L"<!ATTLIST e a CDATA '" + std::wstring(characters, L'x') + L"'>",
                     L"<Services>" + Repeated(L"<e/>", elements) + L"</Services>");
  }

  static constexpr char kTooMuchText[] = "the document expands to more than 32 MiB of text";
};

TEST_F(AttributeValueBoundsTest, AThousandExpansionsAreRead) {
  ExpectRead(Expanding(1000, L"x"));
}

TEST_F(AttributeValueBoundsTest, OneExpansionMoreIsRefused) {
  ExpectRefused(Expanding(1001, L"x"), "the document expands more than 1000 entities");
}

TEST_F(AttributeValueBoundsTest, ExpansionsInAttributesAndTextAreCountedTogether) {
  ExpectRefused(Declaring(L"<!ENTITY e 'x'>", L"<Services a='" + Repeated(L"&e;", 500) + L"'><b c='" +
                                                  Repeated(L"&e;", 300) + L"'>" + Repeated(L"&e;", 201) +
                                                  L"</b></Services>"),
                "the document expands more than 1000 entities");
}

TEST_F(AttributeValueBoundsTest, TenMebibytesOfExpandedValueAreRead) {
  ExpectRead(Expanding(10, std::wstring(kMiB, L'x')));
}

TEST_F(AttributeValueBoundsTest, FortyMebibytesOfExpandedValueAreRefused) {
  ExpectRefused(Expanding(40, std::wstring(kMiB, L'x')), kTooMuchText);
}

TEST_F(AttributeValueBoundsTest, ValuesOfSeveralElementsAreCountedTogether) {
  ExpectRefused(Declaring(L"<!ENTITY e '" + std::wstring(kMiB, L'x') + L"'>",
                          L"<Services>" + Repeated(L"<a b='&e;'/>", 40) + L"</Services>"),
                kTooMuchText);
}

TEST_F(AttributeValueBoundsTest, AValueIsRefusedWhileItGrowsWhenItWouldFillTheMemory) {
  EXPECT_EQ(Refusal(WithMemory(32 * kMiB), Expanding(900, std::wstring(kMiB / 4, L'x'))),
            "the document expands to more than the parser may hold (32 MiB)");
}

TEST_F(AttributeValueBoundsTest, DefaultValuesOfFewElementsAreRead) {
  ExpectRead(Defaulting(kMiB / 16, 160));
}

TEST_F(AttributeValueBoundsTest, DefaultValuesOfManyElementsAreRefused) {
  ExpectRefused(Defaulting(kMiB / 16, 640), kTooMuchText);
}

TEST_F(AttributeValueBoundsTest, TextThatADefaultValueExpandsToIsCountedToo) {
  ExpectRefused(Declaring(L"<!ENTITY e '" + std::wstring(kMiB, L'x') + L"'><!ATTLIST Services a CDATA '" +
                          Repeated(L"&e;", 40) + L"'>"),
                kTooMuchText);
}

TEST_F(AttributeValueBoundsTest, ADefaultValueThatExpandsWithoutEndIsRefused) {
  std::wstring declarations = L"<!ENTITY e0 ''>";
  for (int i = 1; i <= 60; ++i) {
    const std::wstring inner = L"&e" + std::to_wstring(i - 1) + L";";
    declarations += L"<!ENTITY e" + std::to_wstring(i) + L" '" + inner + inner + L"'>";
  }
  EXPECT_EQ(Refusal(WithTime(std::chrono::milliseconds(200)),
                    Declaring(declarations + L"<!ATTLIST Services a CDATA '&e60;'>")),
            "the document takes longer than 200 ms to parse");
}

}  // namespace
