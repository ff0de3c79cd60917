#include "agent/InterfaceDescription.h"

#include <regex>
#include <set>
#include <stdexcept>

namespace {

std::string SortedElement(const std::string& name, const std::string& attributes) {
  static const std::regex attribute("\\w+=\"[^\"]*\"");
  std::set<std::string> sorted;
  for (std::sregex_iterator match(attributes.begin(), attributes.end(), attribute), end; match != end;
       ++match) {
    sorted.insert(match->str());
  }
  std::string element = name;
  for (const std::string& text : sorted) element += " " + text;
  return element;
}

}  // namespace

std::vector<std::string> InterfaceDescription(const std::string& xml, const std::string& interface) {
  const std::size_t start = xml.find("<interface name=\"" + interface + "\"");
  const std::size_t end = xml.find("</interface>", start);
  if (start == std::string::npos || end == std::string::npos)
    throw std::runtime_error(interface + " in: " + xml);
  const std::string block = xml.substr(start, end - start);
  static const std::regex element("<(\\w+)((?:\\s+\\w+=\"[^\"]*\")*)\\s*/?>");
  std::vector<std::string> elements;
  for (std::sregex_iterator match(block.begin(), block.end(), element), none; match != none; ++match) {
    elements.push_back(SortedElement((*match)[1], (*match)[2]));
  }
  return elements;
}
