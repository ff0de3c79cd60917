#pragma once

#include "libs/DomLib/ParseMeter.h"

#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/SecurityManager.hpp>

#include <cstddef>
#include <string>

// The DOM parser with bounds on what a document may cost. Used by one thread at a time.
class BoundedParser : public xercesc::XercesDOMParser {
 public:
  // Both outlive the parser; the memory manager is the one that feeds the meter.
  BoundedParser(ParseMeter& meter, xercesc::MemoryManager& memory);

  // Past a bound, throws a std::runtime_error whose text names the bound; the parser is then in no state to
  // be used again.
  void ParseWithinBounds(const xercesc::InputSource& source);

  void startElement(const xercesc::XMLElementDecl& declaration, unsigned int uriId, const XMLCh* prefix,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t attributeCount,
                    bool isEmpty, bool isRoot) override;
  void elementDecl(const xercesc::DTDElementDecl& declaration, bool isIgnored) override;
  void attDef(const xercesc::DTDElementDecl& element, const xercesc::DTDAttDef& attribute,
              bool isIgnored) override;
  void endElement(const xercesc::XMLElementDecl& declaration, unsigned int uriId, bool isRoot,
                  const XMLCh* prefix) override;
  void docCharacters(const XMLCh* characters, XMLSize_t length, bool cdataSection) override;
  void ignorableWhitespace(const XMLCh* characters, XMLSize_t length, bool cdataSection) override;
  void error(unsigned int code, const XMLCh* domain, xercesc::XMLErrorReporter::ErrTypes type,
             const XMLCh* text, const XMLCh* systemId, const XMLCh* publicId, XMLFileLoc line,
             XMLFileLoc column) override;

 private:
  [[noreturn]] void Fail(const std::string& reason);
  void CountExpanded(std::size_t units);

  ParseMeter& meter_;
  xercesc::SecurityManager entityLimit_;
};
