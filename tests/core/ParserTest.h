#pragma once

#include "SRLib/DiscoveryDocParser.h"
#include "SRLib/SRDocParser.h"
#include "core/CoreTest.h"
#include "core/Documents.h"
#include "support/StoreBuilders.h"

#include <string>
#include <vector>

namespace TestSupport {

// What a parser makes of one document.
class ParserTest : public CoreTest {
 protected:
  using Wide = std::vector<std::wstring>;

  // Parses with a parser of the kind; the stores and the result are kept.
  template <class Parser = ServiceRecords::SRDocParser>
  bool Parse(const std::wstring& document) {
    trace_.Clear();
    return Parser().Deserialize(document, stores_);
  }

  // Parses a document that names no schema, so that only the reading itself leaves records.
  bool ParseServices(const std::wstring& services) {
    return Parse(L"<Services>" + services + L"</Services>");
  }

  // The store of that id; a failure when there is none.
  const ServiceRecords::SRStore& Held(const std::wstring& id) {
    EXPECT_TRUE(stores_.contains(id));
    return stores_[id];
  }

  // The records of the reading, without the last one that every read document leaves.
  Records ReadingRecords() {
    Records records = trace_.Records();
    const TraceRecord last{0, kDocParserFile, "No Errors Detected"};
    EXPECT_FALSE(records.empty());
    if (records.empty()) return records;
    EXPECT_EQ(records.back(), last);
    records.pop_back();
    return records;
  }

  ServiceRecords::StoreMap stores_;
};

}  // namespace TestSupport
