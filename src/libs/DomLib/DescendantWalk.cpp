#include "libs/DomLib/DescendantWalk.h"

#include <xercesc/dom/DOM.hpp>

namespace DomLib {

using namespace xercesc;

DescendantWalk::DescendantWalk(const DOMElement& root) {
  path_.reserve(kUsualDepth);
  path_.push_back(&root);
}

const DOMNode* DescendantWalk::NextNode() {
  if (path_.empty()) return nullptr;
  if (const DOMNode* child = path_.back()->getFirstChild(); child != nullptr)
    return path_.emplace_back(child);
  for (; path_.size() > 1; path_.pop_back()) {
    if (const DOMNode* sibling = path_.back()->getNextSibling(); sibling != nullptr)
      return path_.back() = sibling;
  }
  path_.clear();
  return nullptr;
}

const DOMElement* DescendantWalk::Next() {
  const DOMNode* node = NextNode();
  while (node != nullptr && node->getNodeType() != DOMNode::ELEMENT_NODE) node = NextNode();
  return static_cast<const DOMElement*>(node);
}

const DOMElement* DescendantWalk::Next(const XMLCh* name) {
  const DOMElement* element = Next();
  while (element != nullptr && !AreSameName(name, element->getNodeName())) element = Next();
  return element;
}

}  // namespace DomLib
