#include "SRLib/SRXMLProvider.h"

#include "SRLib/DiscoveryDocParser.h"
#include "SRLib/SRDocParser.h"
#include "libs/Trace/Trace.h"

namespace ServiceRecords {

SRXMLProvider::SRXMLProvider() = default;
SRXMLProvider::~SRXMLProvider() = default;

bool SRXMLProvider::IsDiscovery(const std::wstring& text) {
  return text.find(L"<Discovery") != std::wstring::npos;
}

bool SRXMLProvider::ProcessNewDocument(const std::wstring& text, StoreMap& out) {
  if (IsDiscovery(text)) {
    parser_ = std::make_unique<DiscoveryDocParser>();
  } else {
    parser_ = std::make_unique<SRDocParser>();
  }
  parser_->ReportTo(report_);
  return parser_->Deserialize(text, out);
}

std::wstring SRXMLProvider::RootName() const {
  return parser_ == nullptr ? std::wstring() : parser_->RootName();
}

bool SRXMLProvider::NamesSchema() const {
  return parser_ != nullptr && parser_->NamesSchema();
}

StoreMap SRXMLProvider::Parse(const std::wstring& text) {
  StoreMap stores;
  if (!ProcessNewDocument(text, stores)) SR_TRACE(2) << "Failed to parse SR document: " << text;
  return stores;
}

}  // namespace ServiceRecords
