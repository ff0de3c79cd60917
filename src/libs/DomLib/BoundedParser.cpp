#include "libs/DomLib/BoundedParser.h"

#include "libs/DomLib/MeteredInputSource.h"

#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/framework/XMLBuffer.hpp>
#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/internal/ElemStack.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/QName.hpp>
#include <xercesc/util/RefVectorOf.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/util/XMLUniDefs.hpp>
#include <xercesc/validators/DTD/DTDAttDef.hpp>
#include <xercesc/validators/DTD/DTDElementDecl.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>
#include <xercesc/validators/common/ContentSpecNode.hpp>
#include <xercesc/validators/schema/SchemaSymbols.hpp>

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <vector>

namespace DomLib {

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

// Memory may run out anywhere, for as long as this object lives.
class MakingAutomaton {
 public:
  explicit MakingAutomaton(ParseMeter& meter) : meter_(meter) { meter_.makingAutomaton = true; }
  ~MakingAutomaton() { meter_.makingAutomaton = false; }
  MakingAutomaton(const MakingAutomaton&) = delete;
  MakingAutomaton& operator=(const MakingAutomaton&) = delete;

 private:
  ParseMeter& meter_;
};

std::size_t Utf8Length(const XMLCh* text, std::size_t length) {
  // Added up without a branch, so that several units are counted at once.
  return std::accumulate(text, text + length, length, [](std::size_t sum, XMLCh unit) {
    const bool isSurrogate = (unit & 0xF800) == 0xD800;  // two of them are four bytes
    return sum + (unit >= 0x80 ? 1U : 0U) + (unit >= 0x800 ? 1U : 0U) - (isSurrogate ? 1U : 0U);
  });
}

struct ModelSize {
  std::size_t parts = 0;
  std::size_t characters = 0;
};

// Counts no further than the first part past the limit.
ModelSize SizeOf(const ContentSpecNode* model, std::size_t limit) {
  std::vector<const ContentSpecNode*> open{model};
  ModelSize size;
  while (!open.empty() && size.parts <= limit) {
    const ContentSpecNode* part = open.back();
    open.pop_back();
    if (part == nullptr) continue;
    ++size.parts;
    if (part->getElement() != nullptr)
      size.characters += XMLString::stringLen(part->getElement()->getRawName());
    open.push_back(part->getFirst());
    open.push_back(part->getSecond());
  }
  return size;
}

constexpr XMLSize_t kPrefixCharacters = 63;  // to begin with

}  // namespace

BoundedParser::BoundedParser(ParseMeter& meter, MemoryManager& memory)
    : XercesDOMParser(nullptr, &memory, nullptr), meter_(meter), memory_(memory) {
  entityLimit_.setEntityExpansionLimit(meter_.bounds.entityExpansions);
  setSecurityManager(&entityLimit_);
}

void BoundedParser::ParseWithinBounds(const InputSource& source) {
  const MeteredInputSource document(source, meter_, memory_);
  const MeteredParse metered(meter_);
  hasExpandedEntity_ = false;
  Look();
  try {
    parse(document);
  } catch (const OutOfMemoryException&) {
    if (meter_.exceeded.empty()) throw;
  }
  if (!meter_.exceeded.empty()) Fail(meter_.exceeded);
}

// The library's content models are walked recursively, so they have to be refused before their first use.
void BoundedParser::elementDecl(const DTDElementDecl& declaration, bool isIgnored) {
  const ModelSize size = SizeOf(declaration.getContentSpec(), meter_.bounds.contentModelParts);
  if (size.parts > meter_.bounds.contentModelParts) {
    Fail("the document declares a content model of more than " +
         std::to_string(meter_.bounds.contentModelParts) + " parts");
  }
  meter_.largestModel = std::max(meter_.largestModel, size.parts + size.characters);
  if (!isIgnored) MakeAutomaton(declaration);
  Look();
  XercesDOMParser::elementDecl(declaration, isIgnored);
}

// An automaton can have exponentially many states. The library would make it at its first use, where it must
// not run out of memory.
void BoundedParser::MakeAutomaton(const DTDElementDecl& declaration) {
  if (declaration.getContentSpec() == nullptr) return;
  const MakingAutomaton making(meter_);
  static_cast<void>(const_cast<DTDElementDecl&>(declaration).getContentModel());
}

void BoundedParser::attDef(const DTDElementDecl& element, const DTDAttDef& attribute, bool isIgnored) {
  // The library compares every declared value with every other before it looks at the clock again.
  meter_.enumerationCharacters += XMLString::stringLen(attribute.getEnumeration());
  if (meter_.enumerationCharacters > meter_.bounds.enumerationCharacters) {
    Fail("the document enumerates more than " + std::to_string(meter_.bounds.enumerationCharacters >> 10) +
         " KiB of attribute values");
  }
  CheckAttributeCount(element.getAttDefList().getAttDefCount());
  const bool isList = attribute.getType() == XMLAttDef::IDRefs || attribute.getType() == XMLAttDef::Entities;
  if (isList) RefuseReferenceList();
  Look();
  XercesDOMParser::attDef(element, attribute, isIgnored);
}

// A tag or a declaration lies within one entity, so this bounds each of them.
void BoundedParser::entityDecl(const DTDEntityDecl& entity, bool isParameter, bool isIgnored) {
  const bool holdsMarkup = XMLString::indexOf(entity.getValue(), chOpenAngle) != -1;
  if (holdsMarkup && entity.getValueLen() > meter_.bounds.entityMarkup) {
    Fail("the document declares an entity of more than " + std::to_string(meter_.bounds.entityMarkup >> 10) +
         " KiB of markup");
  }
  Look();
  XercesDOMParser::entityDecl(entity, isParameter, isIgnored);
}

void BoundedParser::notationDecl(const XMLNotationDecl& notation, bool isIgnored) {
  Look();
  XercesDOMParser::notationDecl(notation, isIgnored);
}

void BoundedParser::startAttList(const DTDElementDecl& element) {
  Look();
  XercesDOMParser::startAttList(element);
}

void BoundedParser::doctypeComment(const XMLCh* comment) {
  CountText(comment, XMLString::stringLen(comment));
  Look();
  XercesDOMParser::doctypeComment(comment);
}

void BoundedParser::doctypePI(const XMLCh* target, const XMLCh* data) {
  CountText(data, XMLString::stringLen(data));
  Look();
  XercesDOMParser::doctypePI(target, data);
}

void BoundedParser::doctypeWhitespace(const XMLCh* characters, XMLSize_t length) {
  CountText(characters, length);
  Look();
  XercesDOMParser::doctypeWhitespace(characters, length);
}

void BoundedParser::startElement(const XMLElementDecl& declaration, unsigned int uriId, const XMLCh* prefix,
                                 const RefVectorOf<XMLAttr>& attributes, XMLSize_t attributeCount,
                                 bool isEmpty, bool isRoot) {
  if (meter_.depth >= meter_.bounds.nesting) {
    Fail("the document nests deeper than " + std::to_string(meter_.bounds.nesting) + " levels");
  }
  ++meter_.depth;
  CountElement();
  CheckAttributeCount(attributeCount);
  for (XMLSize_t i = 0; i < attributeCount; ++i) {
    const XMLAttr& attribute = *attributes.elementAt(i);
    CountText(attribute.getValue(), XMLString::stringLen(attribute.getValue()));
    if (NamesReferenceList(attribute)) RefuseReferenceList();
  }
  Look();
  XercesDOMParser::startElement(declaration, uriId, prefix, attributes, attributeCount, isEmpty, isRoot);
}

// The library calls it for empty elements too.
void BoundedParser::endElement(const XMLElementDecl& declaration, unsigned int uriId, bool isRoot,
                               const XMLCh* prefix) {
  --meter_.depth;
  Look();
  XercesDOMParser::endElement(declaration, uriId, isRoot, prefix);
}

void BoundedParser::docCharacters(const XMLCh* characters, XMLSize_t length, bool cdataSection) {
  CountText(characters, length);
  Look();
  XercesDOMParser::docCharacters(characters, length, cdataSection);
}

void BoundedParser::ignorableWhitespace(const XMLCh* characters, XMLSize_t length, bool cdataSection) {
  CountText(characters, length);
  Look();
  XercesDOMParser::ignorableWhitespace(characters, length, cdataSection);
}

void BoundedParser::docComment(const XMLCh* comment) {
  CountText(comment, XMLString::stringLen(comment));
  Look();
  XercesDOMParser::docComment(comment);
}

void BoundedParser::docPI(const XMLCh* target, const XMLCh* data) {
  CountText(data, XMLString::stringLen(data));
  Look();
  XercesDOMParser::docPI(target, data);
}

void BoundedParser::startEntityReference(const XMLEntityDecl& entity) {
  hasExpandedEntity_ = true;
  XercesDOMParser::startEntityReference(entity);
}

InputSource* BoundedParser::resolveEntity(XMLResourceIdentifier* identifier) {
  Look();
  return XercesDOMParser::resolveEntity(identifier);
}

void BoundedParser::error(unsigned int code, const XMLCh* domain, XMLErrorReporter::ErrTypes type,
                          const XMLCh* text, const XMLCh* systemId, const XMLCh* publicId, XMLFileLoc line,
                          XMLFileLoc column) {
  if (code == XMLErrs::EntityExpansionLimitExceeded && XMLString::equals(domain, XMLUni::fgXMLErrDomain)) {
    Fail("the document expands more than " + std::to_string(meter_.bounds.entityExpansions) + " entities");
  }
  Look();
  XercesDOMParser::error(code, domain, type, text, systemId, publicId, line, column);
}

void BoundedParser::Fail(const std::string& reason) {
  meter_.running = false;
  throw std::runtime_error(reason);
}

// All children of an element are compared with all names of its model in one go.
void BoundedParser::CountElement() {
  ++meter_.elements;
  if (meter_.elements * meter_.largestModel > meter_.bounds.modelComparisons) {
    Fail("the document has too many elements for the size of its content models");
  }
}

void BoundedParser::CheckAttributeCount(std::size_t count) {
  if (count > meter_.bounds.attributes) {
    Fail("the document has an element of more than " + std::to_string(meter_.bounds.attributes) +
         " attributes");
  }
}

// Such a list is looked up name by name, in one go, in a table whose collisions a document can choose.
void BoundedParser::RefuseReferenceList() {
  Fail("the document has a list of references (type IDREFS or ENTITIES)");
}

// Whether the attribute gives its element one of these types, which are the schema language's own.
bool BoundedParser::NamesReferenceList(const XMLAttr& attribute) const {
  const bool isType =
      XMLString::equals(attribute.getName(), SchemaSymbols::fgXSI_TYPE) &&
      XMLString::equals(getScanner()->getURIText(attribute.getURIId()), SchemaSymbols::fgURI_XSI);
  if (!isType) return false;
  const XMLCh* name = attribute.getValue();  // the library has left out the space around it
  XMLBuffer prefix(kPrefixCharacters, &memory_);
  int colon = -1;
  const unsigned uri = getScanner()->resolveQName(name, prefix, ElemStack::Mode_Element, colon);
  const XMLCh* local = name + colon + 1;
  return XMLString::equals(getScanner()->getURIText(uri), SchemaSymbols::fgURI_SCHEMAFORSCHEMA) &&
         (XMLString::equals(local, XMLUni::fgIDRefsString) ||
          XMLString::equals(local, XMLUni::fgEntitiesString));
}

void BoundedParser::CountText(const XMLCh* text, XMLSize_t length) {
  meter_.expandedBytes += Utf8Length(text, length);
  if (meter_.expandedBytes > meter_.bounds.expandedBytes) {
    Fail("the document expands to more than " + std::to_string(meter_.bounds.expandedBytes >> 20) +
         " MiB of text");
  }
}

void BoundedParser::Look() {
  meter_.blocksSinceLook = 0;
  if (meter_.ExceedsMemory(0) || meter_.IsLate()) Fail(meter_.Excess(0));
}

}  // namespace DomLib
