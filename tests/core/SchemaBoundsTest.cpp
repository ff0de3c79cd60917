#include "core/BoundsTest.h"
#include "support/TemporaryFolder.h"

#include <fstream>

namespace {

using namespace TestSupport;

// Whatever the bound, a document that names a schema is read or refused, and nothing else happens.
class SchemaBoundsTest : public BoundsTest {
 protected:
  static std::string Refusal(std::size_t memory, const std::wstring& text) {
    DOMServices dom(WithMemory(memory));
    dom.SetSchema(L"serviceRecord.xsd", L"servicerecord.xsd");
    try {
      static_cast<void>(dom.GetDocument(text));
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "";
  }

  // Runs out of memory at many places before the one where the document needs the most.
  static void ExpectRefusedBelowItsNeed(const std::wstring& text, std::size_t step, std::size_t steps) {
    std::size_t refused = 0;
    std::size_t read = 16 * kMiB;
    ASSERT_EQ(Refusal(read, text), "");
    while (read - refused > 64) {
      const std::size_t middle = (read + refused) / 2;
      (Refusal(middle, text).empty() ? read : refused) = middle;
    }
    for (std::size_t less = step; less <= steps * step; less += step)
      EXPECT_TRUE(Refusal(read - less, text).starts_with("the document expands to more than")) << less;
  }
};

TEST_F(SchemaBoundsTest, MemoryCanRunOutAtTheFirstChildOfAnElementThatHasAType) {
  const std::wstring text = ServiceRecord(Repeated(L"<!--" + std::wstring(200, L'y') + L"-->", 3000) +
                                          L"<Service type=\"store\"/>");
  ExpectRefusedBelowItsNeed(text, 64, 80);
}

TEST_F(SchemaBoundsTest, MemoryCanRunOutWhileAnElementIsGivenTwoTypes) {
  const std::wstring text = ServiceRecord(
      L"<Service xmlns:x2=\"http://www.w3.org/2001/XMLSchema-instance\" type=\"store\" xsi:type=\"a\" "
      L"x2:type=\"" +
      std::wstring(300000, L'b') + L"\"/>");
  ExpectRefusedBelowItsNeed(text, kMiB / 16, 40);
}

TEST_F(SchemaBoundsTest, MemoryCanRunOutWhileANamedFileIsOpened) {
  const TemporaryFolder folder;
  std::filesystem::current_path(folder.Path());
  std::ofstream("file") << "<!--" << std::string(100000, 'x') << "-->";
  ExpectRefusedBelowItsNeed(L"<!DOCTYPE a SYSTEM 'file'><a/>", 8192, 20);
  ExpectRefusedBelowItsNeed(L"<!DOCTYPE a [<!ENTITY e SYSTEM 'file'>]><a>&e;&e;</a>", 8192, 20);
  std::filesystem::current_path("/");
}

TEST_F(SchemaBoundsTest, TimeRunsOutBetweenTheSchemasOfOneElement) {
  std::wstring locations;
  for (int i = 0; i < 20000; ++i) locations += L" u" + std::to_wstring(i) + L" servicerecord.xsd";
  DOMServices dom(WithTime(std::chrono::milliseconds(200)));
  dom.SetSchema(L"serviceRecord.xsd", L"servicerecord.xsd");
  EXPECT_THROW(static_cast<void>(dom.GetDocument(L"<a xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
                                                 L"xsi:schemaLocation='" +
                                                 locations + L"'/>")),
               std::runtime_error);
}

}  // namespace
