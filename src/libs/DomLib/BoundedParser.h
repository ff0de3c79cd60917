#pragma once

#include "libs/DomLib/ParseMeter.h"

#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/SecurityManager.hpp>

#include <cstddef>
#include <string>

namespace DomLib {

// The DOM parser with bounds on what a document may cost. Used by one thread at a time.
class BoundedParser : public xercesc::XercesDOMParser {
 public:
  // Both outlive the parser; the memory manager is the one that feeds the meter.
  BoundedParser(ParseMeter& meter, xercesc::MemoryManager& memory);

  // Past a bound, throws a std::runtime_error whose text names the bound; the parser is then in no state to
  // be used again.
  void ParseWithinBounds(const xercesc::InputSource& source);

  // Whether the last parse has put an entity into the document. Nothing else leaves two texts side by side.
  [[nodiscard]] bool HasExpandedEntity() const { return hasExpandedEntity_; }

  void elementDecl(const xercesc::DTDElementDecl& declaration, bool isIgnored) override;
  void attDef(const xercesc::DTDElementDecl& element, const xercesc::DTDAttDef& attribute,
              bool isIgnored) override;
  void entityDecl(const xercesc::DTDEntityDecl& entity, bool isParameter, bool isIgnored) override;
  void notationDecl(const xercesc::XMLNotationDecl& notation, bool isIgnored) override;
  void startAttList(const xercesc::DTDElementDecl& element) override;
  void doctypeComment(const XMLCh* comment) override;
  void doctypePI(const XMLCh* target, const XMLCh* data) override;
  void doctypeWhitespace(const XMLCh* characters, XMLSize_t length) override;

  void startElement(const xercesc::XMLElementDecl& declaration, unsigned int uriId, const XMLCh* prefix,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t attributeCount,
                    bool isEmpty, bool isRoot) override;
  void endElement(const xercesc::XMLElementDecl& declaration, unsigned int uriId, bool isRoot,
                  const XMLCh* prefix) override;
  void docCharacters(const XMLCh* characters, XMLSize_t length, bool cdataSection) override;
  void ignorableWhitespace(const XMLCh* characters, XMLSize_t length, bool cdataSection) override;
  void docComment(const XMLCh* comment) override;
  void docPI(const XMLCh* target, const XMLCh* data) override;

  void startEntityReference(const xercesc::XMLEntityDecl& entity) override;

  xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* identifier) override;
  void error(unsigned int code, const XMLCh* domain, xercesc::XMLErrorReporter::ErrTypes type,
             const XMLCh* text, const XMLCh* systemId, const XMLCh* publicId, XMLFileLoc line,
             XMLFileLoc column) override;

 private:
  // Compares the meter with the bounds of memory and time. The library allows an exception in every one of
  // the calls above, and in few other places.
  void Look();
  void CountText(const XMLCh* text, XMLSize_t length);
  void CountElement();
  void CheckAttributeCount(std::size_t count);
  void MakeAutomaton(const xercesc::DTDElementDecl& declaration);
  [[nodiscard]] bool NamesReferenceList(const xercesc::XMLAttr& attribute) const;
  [[noreturn]] void RefuseReferenceList();
  [[noreturn]] void Fail(const std::string& reason);

  ParseMeter& meter_;
  xercesc::MemoryManager& memory_;
  xercesc::SecurityManager entityLimit_;
  bool hasExpandedEntity_ = false;
};

}  // namespace DomLib
