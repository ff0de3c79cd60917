#include "libs/DomLib/DomServices.h"

#include "libs/DomLib/BoundedFileInputSource.h"
#include "libs/DomLib/BoundedParser.h"
#include "libs/DomLib/MeteredMemoryManager.h"
#include "libs/DomLib/XercesUtils.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Trace/Trace.h"

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax/EntityResolver.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <stdexcept>
#include <string_view>
#include <utility>

using namespace xercesc;

namespace {

// Counts the problems of a parse and writes them to the trace log.
class ParsingErrorHandler : public ErrorHandler {
 public:
  void warning(const SAXParseException& exception) override {
    SR_TRACE(1) << "Warning";
    ReportError(exception);
    Report(Gravity::Warning, exception);
  }

  void error(const SAXParseException& exception) override {
    errorsSeen_ = true;
    SR_TRACE(2) << "Error";
    ReportError(exception);
    Report(Gravity::Error, exception);
  }

  void fatalError(const SAXParseException& exception) override {
    errorsSeen_ = true;
    SR_TRACE(3) << "Fatal";
    ReportError(exception);
    Report(Gravity::Fatal, exception);
  }

  void resetErrors() override {
    errorsSeen_ = false;
    textDumped_ = false;
    documentText_ = {};
  }

  [[nodiscard]] bool ErrorsSeen() const { return errorsSeen_; }
  // Not copied: it has to be kept until the parse is over.
  void SetDocumentText(std::wstring_view text) { documentText_ = text; }
  // `document`: what the parser calls the document itself.
  void SetDocumentName(const std::wstring& document) { documentName_ = util::narrow(document); }
  void ReportTo(DomLib::ProblemReport report) { report_ = std::move(report); }

 private:
  using Gravity = DomLib::DocumentProblem::Gravity;

  void Report(Gravity gravity, const SAXParseException& exception) const {
    if (!report_) return;
    const XMLCh* const place = exception.getSystemId();
    std::string file = place == nullptr ? "" : util::narrow(AsWString(place));
    if (file == documentName_) file.clear();
    report_({gravity, std::move(file), exception.getLineNumber(), exception.getColumnNumber(),
             util::narrow(AsWString(exception.getMessage()))});
  }

  void ReportError(const SAXParseException& exception) {
    const std::string identifier = AsString(exception.getSystemId());
    const std::wstring message = AsWString(exception.getMessage());
    if (identifier.empty()) {
      SR_TRACE(2) << ": \"" << message << "\".";
    } else {
      SR_TRACE(2) << " in [" << identifier << "] at line " << exception.getLineNumber() << ", column "
                  << exception.getColumnNumber() << ".";
      SR_TRACE(2) << "    Message:  \"" << message << "\".";
    }
    DumpTextOnce();
  }

  void DumpTextOnce() {
    if (textDumped_) return;
    SR_TRACE(2) << documentText_;
    textDumped_ = true;
  }

  bool errorsSeen_ = false;
  std::wstring_view documentText_;
  std::string documentName_;
  DomLib::ProblemReport report_;
  bool textDumped_ = false;
};

// Maps the schema that a document names to the schema file.
class MyResolver : public EntityResolver {
 public:
  MyResolver(const std::wstring& schemaName, const std::wstring& schemaFile, const std::wstring& importedFile,
             MemoryManager& memory)
      : schemaName_(AsXString(schemaName)),
        schemaFile_(AsXString(schemaFile)),
        importedFile_(AsXString(importedFile)),
        memory_(memory) {}

  InputSource* resolveEntity(const XMLCh* /*publicId*/, const XMLCh* systemId) override {
    // A schema may import a namespace without saying where it is to be found.
    if (systemId == nullptr) return nullptr;
    if (XMLString::compareIString(systemId, schemaName_.c_str()) == 0) {
      return schemaFile_.empty() ? Open(schemaName_.c_str(), DomLib::FileOrigin::Document)
                                 : Open(schemaFile_.c_str(), DomLib::FileOrigin::Program);
    }
    const bool isImported = !importedFile_.empty() && importedFile_ == systemId;
    return Open(systemId, isImported ? DomLib::FileOrigin::Program : DomLib::FileOrigin::Document);
  }

 private:
  InputSource* Open(const XMLCh* name, DomLib::FileOrigin origin) {
    return new (&memory_) DomLib::BoundedFileInputSource(name, origin, memory_);
  }

  const DomLib::XString schemaName_;
  const DomLib::XString schemaFile_;
  const DomLib::XString importedFile_;
  MemoryManager& memory_;
};

ParsingErrorHandler& Parsing(ErrorHandler& handler) {
  return static_cast<ParsingErrorHandler&>(handler);
}

}  // namespace

DOMServices::DOMServices(const DomLib::ParseBounds& bounds)
    : memory_(std::make_unique<DomLib::MeteredMemoryManager>(meter_)),
      errorHandler_(std::make_unique<ParsingErrorHandler>()) {
  meter_.bounds = bounds;
}

DOMServices::~DOMServices() = default;

void DOMServices::SetSchema(const std::wstring& schemaName, const std::wstring& schemaFile) {
  schemaName_ = schemaName;
  schemaFile_ = schemaFile;
  Parsing(*errorHandler_).SetDocumentName(schemaName);
}

void DOMServices::SetImportedSchema(const std::wstring& importedFile) {
  importedFile_ = importedFile;
}

void DOMServices::ReportTo(DomLib::ProblemReport report) {
  Parsing(*errorHandler_).ReportTo(std::move(report));
}

bool DOMServices::ErrorCheck() const {
  return Parsing(*errorHandler_).ErrorsSeen();
}

DOMDocument* DOMServices::GetDocument(const std::wstring& text) {
  errorHandler_->resetErrors();
  const std::string utf8 = util::narrow(text);
  if (utf8.size() > meter_.bounds.documentBytes) {
    throw std::runtime_error("the document is larger than " +
                             std::to_string(meter_.bounds.documentBytes >> 20) + " MiB");
  }
  Parsing(*errorHandler_).SetDocumentText(text);
  MemBufInputSource source(reinterpret_cast<const XMLByte*>(utf8.data()), utf8.size(),
                           AsXString(schemaName_).c_str(), false);
  source.setEncoding(XMLUni::fgUTF8EncodingString);
  source.setCopyBufToStream(false);
  return GetDocument(source);
}

DOMDocument* DOMServices::GetDocument(const MemBufInputSource& source) {
  PrepareParser();
  resolver_ = std::make_unique<MyResolver>(schemaName_, schemaFile_, importedFile_, *memory_);
  parser_->setErrorHandler(errorHandler_.get());
  parser_->setEntityResolver(resolver_.get());
  parser_->setValidationScheme(XercesDOMParser::Val_Auto);
  if (!schemaFile_.empty()) {
    parser_->setDoSchema(true);
    parser_->setDoNamespaces(true);
  }
  parser_->setCreateEntityReferenceNodes(false);
  parser_->setIncludeIgnorableWhitespace(false);
  Parse(source);
  DOMDocument* document = parser_->getDocument();
  // Only what entities bring may stand beside other text. Going through every node takes a tenth of the
  // parse.
  if (document != nullptr && parser_->HasExpandedEntity()) document->normalize();
  return document;
}

void DOMServices::PrepareParser() {
  if (hasParsed_) errorHandler_->resetErrors();  // forgets the document's text too: deliberate
  hasParsed_ = true;
  if (parser_ != nullptr) {
    parser_->reset();
  } else {
    parser_.reset(new (memory_.get()) DomLib::BoundedParser(meter_, *memory_));
  }
}

void DOMServices::Parse(const MemBufInputSource& source) {
  try {
    parser_->ParseWithinBounds(source);
  } catch (const SAXParseException& exception) {
    throw std::runtime_error(AsString(exception.getMessage()));
  } catch (const std::runtime_error&) {
    AbandonParser();
    throw;
  } catch (const OutOfMemoryException&) {
    AbandonParser();
    throw;
  }
}

// A parse that was cut off leaves objects that were in the middle of a change: they are not destroyed, their
// memory alone is freed.
void DOMServices::AbandonParser() {
  static_cast<void>(parser_.release());
  memory_->FreeAll();
}
