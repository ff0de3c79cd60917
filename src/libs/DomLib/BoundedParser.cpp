#include "libs/DomLib/BoundedParser.h"

#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/RefVectorOf.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/DTD/DTDAttDef.hpp>
#include <xercesc/validators/DTD/DTDElementDecl.hpp>
#include <xercesc/validators/common/ContentSpecNode.hpp>

#include <stdexcept>
#include <vector>

using namespace xercesc;

namespace {

// A parse under the meter, for as long as this object lives.
class MeteredParse {
 public:
  explicit MeteredParse(ParseMeter& meter) : meter_(meter) { meter_.Start(); }
  ~MeteredParse() { meter_.running = false; }
  MeteredParse(const MeteredParse&) = delete;
  MeteredParse& operator=(const MeteredParse&) = delete;

 private:
  ParseMeter& meter_;
};

bool HasMorePartsThan(std::size_t limit, const ContentSpecNode* model) {
  std::vector<const ContentSpecNode*> open{model};
  std::size_t parts = 0;
  while (!open.empty() && parts <= limit) {
    const ContentSpecNode* part = open.back();
    open.pop_back();
    if (part == nullptr) continue;
    ++parts;
    open.push_back(part->getFirst());
    open.push_back(part->getSecond());
  }
  return parts > limit;
}

}  // namespace

BoundedParser::BoundedParser(ParseMeter& meter, MemoryManager& memory)
    : XercesDOMParser(nullptr, &memory, nullptr), meter_(meter) {
  entityLimit_.setEntityExpansionLimit(meter_.bounds.entityExpansions);
  setSecurityManager(&entityLimit_);
}

void BoundedParser::ParseWithinBounds(const InputSource& source) {
  const MeteredParse metered(meter_);
  CountExpanded(0);
  try {
    parse(source);
  } catch (const OutOfMemoryException&) {
    if (meter_.exceeded.empty()) throw;
  }
  if (!meter_.exceeded.empty()) Fail(meter_.exceeded);
}

// The library's content models are walked recursively, so they have to be refused before their first use.
void BoundedParser::elementDecl(const DTDElementDecl& declaration, bool isIgnored) {
  if (HasMorePartsThan(meter_.bounds.contentModelParts, declaration.getContentSpec())) {
    Fail("the document declares a content model of more than " +
         std::to_string(meter_.bounds.contentModelParts) + " parts");
  }
  XercesDOMParser::elementDecl(declaration, isIgnored);
}

// The library compares every declared value with every other before it looks at the clock again.
void BoundedParser::attDef(const DTDElementDecl& element, const DTDAttDef& attribute, bool isIgnored) {
  meter_.enumerationCharacters += XMLString::stringLen(attribute.getEnumeration());
  if (meter_.enumerationCharacters > meter_.bounds.enumerationCharacters) {
    Fail("the document enumerates more than " + std::to_string(meter_.bounds.enumerationCharacters >> 10) +
         " KiB of attribute values");
  }
  XercesDOMParser::attDef(element, attribute, isIgnored);
}

void BoundedParser::startElement(const XMLElementDecl& declaration, unsigned int uriId, const XMLCh* prefix,
                                 const RefVectorOf<XMLAttr>& attributes, XMLSize_t attributeCount,
                                 bool isEmpty, bool isRoot) {
  meter_.contentReached = true;
  if (meter_.depth >= meter_.bounds.nesting) {
    Fail("the document nests deeper than " + std::to_string(meter_.bounds.nesting) + " levels");
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
    Fail("the document expands more than " + std::to_string(meter_.bounds.entityExpansions) + " entities");
  }
  XercesDOMParser::error(code, domain, type, text, systemId, publicId, line, column);
}

void BoundedParser::Fail(const std::string& reason) {
  meter_.running = false;
  throw std::runtime_error(reason);
}

void BoundedParser::CountExpanded(std::size_t units) {
  meter_.expandedBytes += units;
  if (meter_.expandedBytes > meter_.bounds.expandedBytes) {
    Fail("the document expands to more than " + std::to_string(meter_.bounds.expandedBytes >> 20) +
         " MiB of text");
  }
  if (!meter_.exceeded.empty()) Fail(meter_.exceeded);
  if (meter_.TimeIsUp()) Fail(meter_.TimeBound());
}
