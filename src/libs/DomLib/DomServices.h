#pragma once

#include "libs/DomLib/DocumentProblem.h"
#include "libs/DomLib/ParseMeter.h"
#include "libs/DomLib/XercesPlatform.h"

#include <xercesc/util/XercesDefs.hpp>

#include <memory>
#include <string>

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
class EntityResolver;
class ErrorHandler;
class MemBufInputSource;
XERCES_CPP_NAMESPACE_END

namespace DomLib {
class BoundedParser;
class MeteredMemoryManager;
}  // namespace DomLib

// Where the documents of stores are parsed: a reusable DOM parser with schema validation. Problems are
// written to the trace log and counted; they do not stop a parse. Used by one thread at a time; any number
// may exist at once.
class DOMServices {
 public:
  // Throws the library's XMLException when the XML library cannot be initialised.
  explicit DOMServices(const DomLib::ParseBounds& bounds = {});
  ~DOMServices();
  DOMServices(const DOMServices&) = delete;
  DOMServices& operator=(const DOMServices&) = delete;

  // The schema location as documents name it, and the file that is loaded for it. An empty file leaves schema
  // and namespace processing off.
  void SetSchema(const std::wstring& schemaName, const std::wstring& schemaFile);
  // Another schema file of the program's own, as the schema file names it to import it.
  void SetImportedSchema(const std::wstring& importedFile);

  // Whoever wants the problems of a parse beside the trace log.
  void ReportTo(DomLib::ProblemReport report);

  // Parses a document held in memory. The document belongs to this object until the next parse; null when the
  // parser made none. Throws std::runtime_error for a parser's exception or a document past a bound (the text
  // names it); the library's other exceptions pass unchanged.
  [[nodiscard]] xercesc::DOMDocument* GetDocument(const std::wstring& text);
  [[nodiscard]] xercesc::DOMDocument* GetDocument(const xercesc::MemBufInputSource& source);

  // True when the last parse reported at least one error; warnings do not count.
  [[nodiscard]] bool ErrorCheck() const;

 private:
  void PrepareParser();
  void Parse(const xercesc::MemBufInputSource& source);
  void AbandonParser();

  DomLib::XercesPlatform platform_;  // the first to come, the last to go
  DomLib::ParseMeter meter_;
  std::unique_ptr<DomLib::MeteredMemoryManager> memory_;
  std::unique_ptr<xercesc::ErrorHandler> errorHandler_;
  std::unique_ptr<xercesc::EntityResolver> resolver_;
  std::unique_ptr<DomLib::BoundedParser> parser_;
  bool hasParsed_ = false;
  std::wstring schemaName_;
  std::wstring schemaFile_;
  std::wstring importedFile_;
};
