#include "libs/DomLib/BoundedParser.h"

#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/RefVectorOf.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <stdexcept>

using namespace xercesc;

BoundedParser::BoundedParser(ParseMeter& meter, MemoryManager& memory)
    : XercesDOMParser(nullptr, &memory, nullptr), meter_(meter) {
  entityLimit_.setEntityExpansionLimit(meter_.bounds.entityExpansions);
  setSecurityManager(&entityLimit_);
}

void BoundedParser::ParseWithinBounds(const InputSource& source) {
  meter_.Start();
  try {
    parse(source);
  } catch (const OutOfMemoryException&) {
    if (meter_.exceeded.empty()) throw;
    throw std::runtime_error(meter_.exceeded);
  }
}

void BoundedParser::startElement(const XMLElementDecl& declaration, unsigned int uriId, const XMLCh* prefix,
                                 const RefVectorOf<XMLAttr>& attributes, XMLSize_t attributeCount,
                                 bool isEmpty, bool isRoot) {
  if (meter_.depth >= meter_.bounds.nesting) {
    throw std::runtime_error("the document nests deeper than " + std::to_string(meter_.bounds.nesting) +
                             " levels");
  }
  for (XMLSize_t i = 0; i < attributeCount; ++i) {
    CountExpanded(XMLString::stringLen(attributes.elementAt(i)->getValue()));
  }
  CountExpanded(0);
  if (!isEmpty) ++meter_.depth;
  XercesDOMParser::startElement(declaration, uriId, prefix, attributes, attributeCount, isEmpty, isRoot);
}

void BoundedParser::endElement(const XMLElementDecl& declaration, unsigned int uriId, bool isRoot,
                               const XMLCh* prefix) {
  if (meter_.depth != 0) --meter_.depth;
  XercesDOMParser::endElement(declaration, uriId, isRoot, prefix);
}

void BoundedParser::docCharacters(const XMLCh* characters, XMLSize_t length, bool cdataSection) {
  CountExpanded(length);
  XercesDOMParser::docCharacters(characters, length, cdataSection);
}

void BoundedParser::ignorableWhitespace(const XMLCh* characters, XMLSize_t length, bool cdataSection) {
  CountExpanded(length);
  XercesDOMParser::ignorableWhitespace(characters, length, cdataSection);
}

void BoundedParser::error(unsigned int code, const XMLCh* domain, XMLErrorReporter::ErrTypes type,
                          const XMLCh* text, const XMLCh* systemId, const XMLCh* publicId, XMLFileLoc line,
                          XMLFileLoc column) {
  // The library reports the limit and would go on with a fresh count.
  if (code == XMLErrs::EntityExpansionLimitExceeded && XMLString::equals(domain, XMLUni::fgXMLErrDomain)) {
    throw std::runtime_error("the document expands more than " +
                             std::to_string(meter_.bounds.entityExpansions) + " entities");
  }
  XercesDOMParser::error(code, domain, type, text, systemId, publicId, line, column);
}

void BoundedParser::CountExpanded(std::size_t units) {
  meter_.expandedBytes += units;
  if (meter_.expandedBytes > meter_.bounds.expandedBytes) {
    throw std::runtime_error("the document expands to more than " +
                             std::to_string(meter_.bounds.expandedBytes >> 20) + " MiB of text");
  }
  if (meter_.TimeIsUp()) throw std::runtime_error(meter_.TimeBound());
}
