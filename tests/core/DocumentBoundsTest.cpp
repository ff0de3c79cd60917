#include "core/BoundsTest.h"

#include <chrono>

namespace {

using namespace TestSupport;

class DocumentBoundsTest : public BoundsTest {
 protected:
  static std::wstring Levels(std::size_t count) { return Repeated(L"<a>", count) + Repeated(L"</a>", count); }

  // A document of exactly so many characters.
  static std::wstring OfSize(std::size_t size, wchar_t filler = L'x') {
    const std::wstring start = L"<Services><!--";
    const std::wstring end = L"--></Services>";
    return start + std::wstring(size - start.size() - end.size(), filler) + end;
  }

  static std::wstring Expanding(std::size_t times, const std::wstring& entity) {
    return Declaring(L"<!ENTITY e '" + entity + L"'>",
                     L"<Services>" + Repeated(L"&e;", times) + L"</Services>");
  }
};

TEST_F(DocumentBoundsTest, SixteenMebibytesAreRead) {
  ExpectRead(OfSize(16 * kMiB));
}

TEST_F(DocumentBoundsTest, OneByteMoreIsRefused) {
  ExpectRefused(OfSize(16 * kMiB + 1), "the document is larger than 16 MiB");
}

TEST_F(DocumentBoundsTest, TheSizeIsThatOfTheUtf8Text) {
  ExpectRefused(OfSize(8 * kMiB + 64, L'\u00E9'), "the document is larger than 16 MiB");
}

TEST_F(DocumentBoundsTest, TwoHundredAndFiftySixLevelsAreRead) {
  ExpectRead(Levels(256));
  ExpectRead(Levels(255).insert(255 * 3, L"<leaf/>"));
}

TEST_F(DocumentBoundsTest, OneLevelMoreIsRefused) {
  ExpectRefused(Levels(257), "the document nests deeper than 256 levels");
  ExpectRefused(Levels(256).insert(256 * 3, L"<leaf/>"), "the document nests deeper than 256 levels");
}

TEST_F(DocumentBoundsTest, LevelsAreCountedWithoutASchemaToo) {
  const auto levels = [](std::size_t count) {
    return Repeated(L"<a><b/>", count) + Repeated(L"</a>", count);
  };
  EXPECT_EQ(Refusal({}, levels(255)), "");
  EXPECT_EQ(Refusal({}, levels(256)), "the document nests deeper than 256 levels");
}

TEST_F(DocumentBoundsTest, ElementsBesideEachOtherAreNoLevels) {
  ExpectRead(L"<Services>" + Repeated(Levels(200), 10) + Repeated(L"<a/>", 1000) + L"</Services>");
}

TEST_F(DocumentBoundsTest, AHundredThousandLevelsAreRefused) {
  ExpectRefused(Levels(100000), "the document nests deeper than 256 levels");
}

TEST_F(DocumentBoundsTest, AThousandExpansionsAreRead) {
  ExpectRead(Expanding(1000, L"x"));
}

TEST_F(DocumentBoundsTest, OneExpansionMoreIsRefused) {
  ExpectRefused(Expanding(1001, L"x"), "the document expands more than 1000 entities");
}

TEST_F(DocumentBoundsTest, EntitiesOfEntitiesAreCountedOneByOne) {
  std::wstring declarations = L"<!ENTITY e0 'x'>";
  for (int i = 1; i <= 10; ++i) {
    const std::wstring inner = L"&e" + std::to_wstring(i - 1) + L";";
    declarations += L"<!ENTITY e" + std::to_wstring(i) + L" '" + inner + inner + L"'>";
  }
  ExpectRead(Declaring(declarations, L"<Services>&e8;</Services>"));
  ExpectRefused(Declaring(declarations, L"<Services>&e10;</Services>"),
                "the document expands more than 1000 entities");
}

TEST_F(DocumentBoundsTest, TenMebibytesOfExpandedTextAreRead) {
  ExpectRead(Expanding(10, std::wstring(kMiB, L'x')));
}

TEST_F(DocumentBoundsTest, FortyMebibytesOfExpandedTextAreRefused) {
  ExpectRefused(Expanding(40, std::wstring(kMiB, L'x')), "the document expands to more than 32 MiB of text");
  ExpectRefused(Expanding(40, std::wstring(kMiB, L' ')), "the document expands to more than 32 MiB of text");
}

TEST_F(DocumentBoundsTest, CommentsAndInstructionsAreExpandedTextToo) {
  const std::wstring filler(60000, L'x');
  for (const std::wstring& entity : {L"<!--" + filler + L"-->", L"<?a " + filler + L"?>"}) {
    ExpectRead(Expanding(500, entity));
    ExpectRefused(Expanding(600, entity), "the document expands to more than 32 MiB of text");
  }
}

TEST_F(DocumentBoundsTest, ExpandedTextIsCountedInBytesOfUtf8) {
  const std::wstring filler(kMiB / 2, L'\u00E9');
  ExpectRead(Expanding(31, filler));
  ExpectRefused(Expanding(33, filler), "the document expands to more than 32 MiB of text");
}

TEST_F(DocumentBoundsTest, ADocumentThatTakesTooLongIsRefused) {
  EXPECT_EQ(Refusal(WithTime(std::chrono::milliseconds(0)), L"<a/>"),
            "the document takes longer than 0 ms to parse");
  EXPECT_EQ(Refusal(WithTime(std::chrono::milliseconds(20)), L"<a>" + Repeated(L"<b/>", 2000000) + L"</a>"),
            "the document takes longer than 20 ms to parse");
}

TEST_F(DocumentBoundsTest, ADocumentThatHoldsTooMuchMemoryIsRefused) {
  EXPECT_EQ(Refusal(WithMemory(4 * kMiB), L"<a>" + Repeated(L"<b/>", 100000) + L"</a>"),
            "the document expands to more than the parser may hold (4 MiB)");
}

TEST_F(DocumentBoundsTest, AParserServesAgainAfterADocumentPastABound) {
  DOMServices dom;
  EXPECT_THROW(static_cast<void>(dom.GetDocument(Levels(300))), std::runtime_error);
  EXPECT_NE(dom.GetDocument(Levels(200)), nullptr);
  EXPECT_FALSE(dom.ErrorCheck());
}

TEST_F(DocumentBoundsTest, EveryDocumentStartsWithFreshBounds) {
  DOMServices dom;
  for (int i = 0; i < 3; ++i) {
    EXPECT_NE(dom.GetDocument(Expanding(900, std::wstring(20000, L'x'))), nullptr);
  }
}

TEST_F(DocumentBoundsTest, ManyStoresAndManyListEntriesAreRead) {
  std::wstring services;
  for (int i = 0; i < 5000; ++i) services += Service(std::to_wstring(i));
  const std::wstring lists = L"<Gateways>" + Repeated(GatewayElement(L"gw"), 5000) +
                             L"</Gateways><Internal>" + Repeated(L"<Beacon>in</Beacon>", 20000) +
                             L"</Internal>";
  ExpectRead(L"<Services>" + services + Service(L"long lists", lists) + L"</Services>");
  EXPECT_EQ(stores_.size(), 5001U);
  EXPECT_EQ(Held(L"long lists").Beacons(ServiceRecords::BeaconType::Internal).size(), 20000U);
}

}  // namespace
