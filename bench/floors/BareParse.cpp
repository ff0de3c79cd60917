#include "floors/BareParse.h"

#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/EntityResolver.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/util/XMLString.hpp>

#include <stdexcept>

using namespace xercesc;

namespace Bench {
namespace {

class SchemaResolver : public EntityResolver {
 public:
  InputSource* resolveEntity(const XMLCh* /*publicId*/, const XMLCh* /*systemId*/) override {
    static const XMLCh* const file = XMLString::transcode("servicerecord.xsd");
    return new LocalFileInputSource(file);
  }
};

class StrictHandler : public ErrorHandler {
 public:
  void warning(const SAXParseException& /*exception*/) override { Fail(); }
  void error(const SAXParseException& /*exception*/) override { Fail(); }
  void fatalError(const SAXParseException& /*exception*/) override { Fail(); }
  void resetErrors() override {}

 private:
  [[noreturn]] static void Fail() { throw std::runtime_error("the document is not valid"); }
};

}  // namespace

void BareParse(const std::string& utf8) {
  MemBufInputSource source(reinterpret_cast<const XMLByte*>(utf8.data()), utf8.size(), "document", false);
  source.setCopyBufToStream(false);
  SchemaResolver resolver;
  StrictHandler handler;
  XercesDOMParser parser;
  parser.setEntityResolver(&resolver);
  parser.setErrorHandler(&handler);
  parser.setValidationScheme(XercesDOMParser::Val_Auto);
  parser.setDoSchema(true);
  parser.setDoNamespaces(true);
  parser.setCreateEntityReferenceNodes(false);
  parser.setIncludeIgnorableWhitespace(false);
  parser.parse(source);
  if (parser.getDocument() == nullptr) throw std::runtime_error("the document is not valid");
}

}  // namespace Bench
