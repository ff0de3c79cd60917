#pragma once

#include "libs/DomLib/XercesUtils.h"

#include <cstddef>
#include <vector>

namespace DomLib {

// The elements below an element, in document order, for who looks for several of them. The document must not
// change.
class Descendants {
 public:
  // Forgets the elements before, and goes through those below this one.
  void Gather(const xercesc::DOMElement& root);
  // For who goes through them anyway: forgets the elements before; takes the next one, so far below any
  // common root.
  void Clear() { places_.clear(); }
  void Add(const xercesc::DOMElement& element, std::size_t depth);

  // The first of that tag name as written; null when there is none.
  [[nodiscard]] const xercesc::DOMElement* First(const char* name) const;

  // Those of one name below the first of another.
  class Items {
   public:
    // Null at the end, and at once without such a container.
    [[nodiscard]] const xercesc::DOMElement* Next();

   private:
    friend class Descendants;
    Items(const Descendants& all, const char* container, const char* item);

    const Descendants& all_;
    const XName name_;
    std::size_t place_;
    std::size_t depth_ = 0;  // of the container
  };
  [[nodiscard]] Items ItemsOfFirst(const char* container, const char* item) const {
    return {*this, container, item};
  }

 private:
  struct Place {
    const xercesc::DOMElement* element;
    const XMLCh* name;
    std::size_t depth;
  };

  [[nodiscard]] std::size_t PlaceOf(const char* name) const;

  std::vector<Place> places_;
};

}  // namespace DomLib
