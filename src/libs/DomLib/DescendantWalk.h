#pragma once

#include "libs/DomLib/XercesUtils.h"

#include <array>
#include <cstddef>
#include <memory_resource>
#include <vector>

namespace DomLib {

// The elements below an element, in document order. A walk over all of them takes linear time, unlike the
// library's own lists, and asks no node for its parent, which is slow there. The document must not change.
class DescendantWalk {
 public:
  explicit DescendantWalk(const xercesc::DOMElement& root);
  DescendantWalk(const DescendantWalk&) = delete;
  DescendantWalk& operator=(const DescendantWalk&) = delete;

  // Null at the end.
  [[nodiscard]] const xercesc::DOMElement* Next();
  // The next one of that tag name as written.
  [[nodiscard]] const xercesc::DOMElement* Next(const XMLCh* name);
  // How far below the root the element is that came last.
  [[nodiscard]] std::size_t Depth() const { return path_.size() - 1; }

 private:
  [[nodiscard]] const xercesc::DOMNode* NextNode();

  static constexpr std::size_t kUsualDepth = 8;

  // Room for the usual depth is in the walk itself, because there are several for each service.
  std::array<std::byte, kUsualDepth * sizeof(void*)> room_;
  std::pmr::monotonic_buffer_resource memory_{room_.data(), room_.size()};
  std::pmr::vector<const xercesc::DOMNode*> path_{
      &memory_};  // from the root to the node before; empty at the end
};

}  // namespace DomLib
