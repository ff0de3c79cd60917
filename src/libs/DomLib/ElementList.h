#pragma once

#include <xercesc/dom/DOMNodeList.hpp>

#include <vector>

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

// Elements of a document that have been collected. The library's own lists search the document anew for their
// length.
class ElementList : public xercesc::DOMNodeList {
 public:
  void Add(const xercesc::DOMElement& element) { elements_.push_back(&element); }

  // Null behind the last one.
  [[nodiscard]] xercesc::DOMNode* item(XMLSize_t index) const override;
  [[nodiscard]] XMLSize_t getLength() const override { return elements_.size(); }

 private:
  std::vector<const xercesc::DOMElement*> elements_;
};
