#include "libs/DomLib/Descendants.h"

#include "libs/DomLib/DescendantWalk.h"

#include <xercesc/dom/DOM.hpp>

#include <algorithm>

namespace DomLib {

using namespace xercesc;

void Descendants::Gather(const DOMElement& root) {
  Clear();
  DescendantWalk walk(root);
  while (const DOMElement* element = walk.Next()) Add(*element, walk.Depth());
}

void Descendants::Add(const DOMElement& element, std::size_t depth) {
  places_.push_back({&element, element.getNodeName(), depth});
}

const DOMElement* Descendants::First(const char* name) const {
  const std::size_t place = PlaceOf(name);
  return place == places_.size() ? nullptr : places_[place].element;
}

std::size_t Descendants::PlaceOf(const char* name) const {
  const XName sought(name);
  const auto found = std::ranges::find_if(
      places_, [&](const Place& place) { return AreSameName(place.name, sought.Get()); });
  return static_cast<std::size_t>(found - places_.begin());
}

Descendants::Items::Items(const Descendants& all, const char* container, const char* item)
    : all_(all), name_(item), place_(all.PlaceOf(container)) {
  if (place_ < all_.places_.size()) depth_ = all_.places_[place_++].depth;
}

const DOMElement* Descendants::Items::Next() {
  while (place_ < all_.places_.size() && all_.places_[place_].depth > depth_) {
    const Place& place = all_.places_[place_++];
    if (AreSameName(place.name, name_.Get())) return place.element;
  }
  return nullptr;
}

}  // namespace DomLib
