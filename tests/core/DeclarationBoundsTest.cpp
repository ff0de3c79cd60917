#include "core/BoundsTest.h"

namespace {

using namespace TestSupport;

class DeclarationBoundsTest : public BoundsTest {
 protected:
  // A model of so many names, joined by a separator.
  static std::wstring Model(std::size_t names, const std::wstring& separator) {
    return L"<!ELEMENT Services (a" + Repeated(separator + L"a", names - 1) + L")>";
  }

  static constexpr char kTooManyParts[] = "the document declares a content model of more than 1000 parts";
};

TEST_F(DeclarationBoundsTest, DeeplyNestedParenthesesEndNeitherTheProcessNorTheReading) {
  ExpectRead(Declaring(L"<!ELEMENT Services " + std::wstring(1000000, L'(') + L"a" +
                       std::wstring(1000000, L')') + L">"));
  EXPECT_FALSE(Parse(L"<!DOCTYPE Services [<!ELEMENT Services " + std::wstring(1000000, L'(')));
}

TEST_F(DeclarationBoundsTest, AContentModelOfOrdinarySizeIsRead) {
  ExpectRead(Declaring(Model(500, L",")));
  ExpectRead(Declaring(Model(500, L"|")));
  ExpectRead(
      Declaring(L"<!ELEMENT Services ANY><!ELEMENT a EMPTY><!ELEMENT b (#PCDATA)><!ELEMENT c (#PCDATA|a)*>"));
}

TEST_F(DeclarationBoundsTest, AContentModelOfMorePartsIsRefused) {
  ExpectRefused(Declaring(Model(501, L",")), kTooManyParts);
  ExpectRefused(Declaring(Model(501, L"|")), kTooManyParts);
  ExpectRefused(Declaring(L"<!ELEMENT Services (#PCDATA" + Repeated(L"|a", 1000) + L")*>"), kTooManyParts);
}

TEST_F(DeclarationBoundsTest, AHugeContentModelIsRefusedWithoutEndingTheProcess) {
  ExpectRefused(Declaring(Model(20000, L",")), kTooManyParts);
  ExpectRefused(Declaring(Model(20000, L"|")), kTooManyParts);
}

TEST_F(DeclarationBoundsTest, AContentModelInAParameterEntityIsRefusedToo) {
  ExpectRefused(Declaring(L"<!ENTITY % model \"" + Model(501, L",") + L"\">%model;"), kTooManyParts);
}

TEST_F(DeclarationBoundsTest, AContentModelThatWouldFillTheMemoryIsRefusedWhileItIsRead) {
  const std::string refusal = "the document has too large a tag or declaration";
  ExpectRefused(Declaring(Model(200000, L",")), refusal);
  ExpectRefused(Declaring(Model(200000, L"|")), refusal);
  EXPECT_EQ(Refusal(WithMemory(64 * kMiB), L"<!DOCTYPE a [<!ELEMENT a (a" + Repeated(L",a", 2000000)),
            refusal);
}

TEST_F(DeclarationBoundsTest, AContentModelWithExponentiallyManyStatesIsRefused) {
  const std::wstring text = Declaring(L"<!ELEMENT Services ((a|b)*,a" + Repeated(L",(a|b)", 25) + L")>",
                                      L"<Services><a/></Services>");
  EXPECT_EQ(Refusal(WithMemory(16 * kMiB), text),
            "the document expands to more than the parser may hold (16 MiB)");
  EXPECT_EQ(Refusal(WithTime(std::chrono::milliseconds(200)), text),
            "the document takes longer than 200 ms to parse");
}

// A content model allocates while it is destroyed, and that is where this document holds the most memory.
TEST_F(DeclarationBoundsTest, MemoryCanRunOutWhileAContentModelIsDestroyed) {
  const std::wstring text =
      Declaring(L"<!ELEMENT Services (a)><!ELEMENT b (a" + Repeated(L",a", 499) + L",,)>");
  std::size_t refused = 0;
  std::size_t read = 4 * kMiB;
  ASSERT_EQ(Refusal(WithMemory(read), text), "");
  while (read - refused > 8) {
    const std::size_t middle = (read + refused) / 2;
    (Refusal(WithMemory(middle), text).empty() ? read : refused) = middle;
  }
  for (std::size_t less = 8; less <= 256; less += 8)
    EXPECT_NE(Refusal(WithMemory(read - less), text), "") << less;
}

TEST_F(DeclarationBoundsTest, ElementsThatALargeModelComparesWithAllItsNamesAreBounded) {
  std::wstring names = L"#PCDATA";
  for (int i = 100; i < 500; ++i) names += L"|n" + std::to_wstring(i);
  const std::wstring model = L"<!ELEMENT Services (" + names + L")*><!ELEMENT n499 EMPTY>";
  const auto filled = [](std::size_t count) {
    return L"<Services>" + Repeated(L"<n499/>", count) + L"</Services>";
  };
  EXPECT_EQ(Refusal({}, Declaring(model, filled(50000))), "");
  EXPECT_EQ(Refusal({}, Declaring(model, filled(500000))),
            "the document has too many elements for the size of its content models");
}

TEST_F(DeclarationBoundsTest, AnExponentialModelIsRefusedAlsoWhenNoElementUsesIt) {
  EXPECT_EQ(
      Refusal(WithMemory(16 * kMiB), Declaring(L"<!ELEMENT b ((a|b)*,a" + Repeated(L",(a|b)", 25) + L")>")),
      "the document expands to more than the parser may hold (16 MiB)");
}

TEST_F(DeclarationBoundsTest, AParserServesAgainWithAllItsMemoryAfterABrokenOffParse) {
  const std::wstring bomb = Declaring(L"<!ELEMENT Services ((a|b)*,a" + Repeated(L",(a|b)", 25) + L")>",
                                      L"<Services><a/></Services>");
  DOMServices dom(WithMemory(8 * kMiB));
  for (int i = 0; i < 3; ++i) {
    EXPECT_THROW(static_cast<void>(dom.GetDocument(bomb)), std::runtime_error);
    EXPECT_NE(dom.GetDocument(L"<a>" + Repeated(L"<b/>", 20000) + L"</a>"), nullptr);
  }
}

TEST_F(DeclarationBoundsTest, MemoryCanRunOutAnywhereInAnAutomaton) {
  const std::wstring text = Declaring(L"<!ELEMENT b ((a|b)*,a" + Repeated(L",(a|b)", 6) + L")>");
  std::size_t refused = 0;
  std::size_t enough = kMiB * 16;
  while (enough - refused > 1) {
    const std::size_t middle = refused + (enough - refused) / 2;
    (Refusal(WithMemory(middle), text).empty() ? enough : refused) = middle;
  }
  constexpr std::size_t kAutomaton = 64 * 1024;
  ASSERT_GT(refused, kAutomaton);
  for (std::size_t memory = refused - kAutomaton; memory < refused; memory += 80) {
    EXPECT_TRUE(Refusal(WithMemory(memory), text).starts_with("the document expands to more than")) << memory;
  }
}

TEST_F(DeclarationBoundsTest, TimeCanRunOutAnywhereInTheDeclarations) {
  const std::wstring text = Declaring(Repeated(L"<!ELEMENT a (b,c,(d|e)*)>", 200000));
  for (const int time : {0, 5, 20, 40}) {
    EXPECT_EQ(Refusal(WithTime(std::chrono::milliseconds(time)), text),
              "the document takes longer than " + std::to_string(time) + " ms to parse");
  }
}

TEST_F(DeclarationBoundsTest, ParameterEntitiesOfParameterEntitiesRunOutOfTime) {
  std::wstring declarations = L"<!ENTITY % p0 ' '>";
  for (int i = 1; i <= 60; ++i) {
    const std::wstring inner = L"&#37;p" + std::to_wstring(i - 1) + L";";
    declarations += L"<!ENTITY % p" + std::to_wstring(i) + L" '" + inner + inner + L"'>";
  }
  EXPECT_EQ(Refusal(WithTime(std::chrono::milliseconds(200)), Declaring(declarations + L"%p60;")),
            "the document takes longer than 200 ms to parse");
}

TEST_F(DeclarationBoundsTest, EnumeratedValuesOfOrdinarySizeAreRead) {
  ExpectRead(Declaring(L"<!ATTLIST Services a (x" + Repeated(L"|x", 8000) + L") #IMPLIED>"));
}

TEST_F(DeclarationBoundsTest, MoreEnumeratedValuesAreRefused) {
  const std::string refusal = "the document enumerates more than 16 KiB of attribute values";
  ExpectRefused(Declaring(L"<!ATTLIST Services a (x" + Repeated(L"|x", 400000) + L") #IMPLIED>"), refusal);
  std::wstring attributes;
  for (int i = 0; i < 20; ++i)
    attributes += L" a" + std::to_wstring(i) + L" (x" + Repeated(L"|x", 500) + L") #IMPLIED";
  ExpectRefused(Declaring(L"<!ATTLIST Services" + attributes + L">"), refusal);
}

}  // namespace
