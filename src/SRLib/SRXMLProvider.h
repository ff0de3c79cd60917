#pragma once

#include "SRLib/SRStore.h"
#include "libs/DomLib/DocumentProblem.h"

#include <memory>
#include <string>
#include <utility>

namespace ServiceRecords {

class SRDocParser;

// The front for incoming documents: tells service-record and discovery documents apart and returns the stores
// found. Make one for each document; used by one thread.
class SRXMLProvider {
 public:
  SRXMLProvider();
  ~SRXMLProvider();
  SRXMLProvider(const SRXMLProvider&) = delete;
  SRXMLProvider& operator=(const SRXMLProvider&) = delete;

  // The stores of the document; empty when there are none or the document failed, which the trace log
  // explains.
  [[nodiscard]] StoreMap Parse(const std::wstring& text);
  // Whether the document counts as a discovery document: "<Discovery" stands anywhere in it.
  [[nodiscard]] static bool IsDiscovery(const std::wstring& text);
  // Chooses the parser by that, and runs it.
  bool ProcessNewDocument(const std::wstring& text, StoreMap& out);

  // Whoever wants to know, beside the trace log, what is wrong with the document.
  void ReportTo(DomLib::ProblemReport report) { report_ = std::move(report); }
  // The root element of the document that was processed; empty when it has none.
  [[nodiscard]] std::wstring RootName() const;
  // Whether that element names a schema; without one, nothing is validated.
  [[nodiscard]] bool NamesSchema() const;

 private:
  DomLib::ProblemReport report_;
  std::unique_ptr<SRDocParser> parser_;
};

}  // namespace ServiceRecords
