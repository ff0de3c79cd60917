#pragma once

#include "core/ParserTest.h"
#include "libs/DomLib/DomServices.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

namespace TestSupport {

constexpr std::size_t kMiB = std::size_t{1} << 20;

// Documents inside and outside the bounds.
class BoundsTest : public ParserTest {
 protected:
  void ExpectRead(const std::wstring& document) {
    EXPECT_TRUE(Parse(document));
    EXPECT_EQ(trace_.RecordsStartingWith("Exception parsing"), Records{});
  }

  // The document fails with exactly one line that names the bound.
  void ExpectRefused(const std::wstring& document, const std::string& reason) {
    EXPECT_FALSE(Parse(document));
    EXPECT_TRUE(stores_.empty());
    Records records = trace_.Records();
    std::erase_if(records, [&reason](const TraceRecord& record) {
      return record.text.find(reason) == std::string::npos;
    });
    EXPECT_EQ(
        records,
        (Records{{2, kDocParserFile, "Exception parsing document containning Service Records: " + reason}}));
    EXPECT_EQ(trace_.RecordsStartingWith("Exception parsing").size(), 1U);
  }

  // Why a parse with these bounds refuses the text; empty when it does not.
  static std::string Refusal(const DomLib::ParseBounds& bounds, const std::wstring& text) {
    DOMServices dom(bounds);
    try {
      static_cast<void>(dom.GetDocument(text));
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "";
  }

  static DomLib::ParseBounds WithTime(std::chrono::milliseconds time) {
    DomLib::ParseBounds bounds;
    bounds.time = time;
    return bounds;
  }

  static DomLib::ParseBounds WithMemory(std::size_t memory) {
    DomLib::ParseBounds bounds;
    bounds.memory = memory;
    return bounds;
  }

  // Names of one length (at most 65536 of them) with one and the same hash in the XML library.
  static std::vector<std::wstring> CollidingNames(std::size_t count) {
    std::vector<std::wstring> names(count);
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t bit = 0; bit < 16; ++bit) names[i] += (i >> bit & 1) != 0 ? L"CT" : L"Bz";
    }
    return names;
  }

  // A document with an internal subset.
  static std::wstring Declaring(const std::wstring& declarations, const std::wstring& root = L"<Services/>") {
    return L"<!DOCTYPE Services [" + declarations + L"]>" + root;
  }
};

}  // namespace TestSupport
