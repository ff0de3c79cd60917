#pragma once

#include "libs/DomLib/XercesUtils.h"

#include <cstddef>
#include <vector>

// The elements below an element, in document order. A walk over all of them takes linear time, unlike the
// library's own lists, and asks no node for its parent, which is slow there. The document must not change.
class DescendantWalk {
 public:
  explicit DescendantWalk(const xercesc::DOMElement& root);

  // Null at the end.
  [[nodiscard]] const xercesc::DOMElement* Next();
  // The next one of that tag name as written.
  [[nodiscard]] const xercesc::DOMElement* Next(const XString& name);
  // How far below the root the element is that came last.
  [[nodiscard]] std::size_t Depth() const { return path_.size() - 1; }

 private:
  [[nodiscard]] const xercesc::DOMNode* NextNode();

  std::vector<const xercesc::DOMNode*> path_;  // from the root to the node before; empty at the end
};
