#include "libs/DomLib/ElementList.h"

#include <xercesc/dom/DOMElement.hpp>

xercesc::DOMNode* ElementList::item(XMLSize_t index) const {
  return index < elements_.size() ? const_cast<xercesc::DOMElement*>(elements_[index]) : nullptr;
}
