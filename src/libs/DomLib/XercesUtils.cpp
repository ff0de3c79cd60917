#include "libs/DomLib/XercesUtils.h"

#include "libs/DomLib/DescendantWalk.h"
#include "libs/ThreadSafety/ThreadSafety.h"

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLChar.hpp>
#include <xercesc/util/XMLString.hpp>

#include <algorithm>
#include <string_view>

using namespace xercesc;

namespace {

ThreadSafety::Mutex& PlatformMutex() {
  static ThreadSafety::Mutex mutex;
  return mutex;
}

template <class To, class Unit, class Convert>
To ConvertUnits(const Unit* text, std::size_t length, Convert convert) {
  To result(length, typename To::value_type{});
  std::transform(text, text + length, result.begin(), convert);
  return result;
}

XMLCh AsUnit(char byte) {
  return static_cast<XMLCh>(static_cast<signed char>(byte));
}

bool IsBlank(const XMLCh* text) {
  return XMLChar1_1::isAllSpaces(text, XMLString::stringLen(text));
}

}  // namespace

namespace DomLib {

XercesPlatform::XercesPlatform() {
  const ThreadSafety::MutexLock lock(PlatformMutex());
  XMLPlatformUtils::Initialize();
}

XercesPlatform::~XercesPlatform() {
  const ThreadSafety::MutexLock lock(PlatformMutex());
  XMLPlatformUtils::Terminate();
}

}  // namespace DomLib

std::wstring AsWString(const XMLCh* text) {
  return ConvertUnits<std::wstring>(text, XMLString::stringLen(text),
                                    [](XMLCh unit) { return static_cast<wchar_t>(unit); });
}

std::string AsString(const XMLCh* text) {
  return ConvertUnits<std::string>(text, XMLString::stringLen(text), [](XMLCh unit) {
    return static_cast<char>(static_cast<unsigned char>(unit));
  });
}

DomLib::XString AsXString(const char* text) {
  return ConvertUnits<DomLib::XString>(text, text == nullptr ? 0 : std::char_traits<char>::length(text),
                                       AsUnit);
}

DomLib::XString AsXString(const std::wstring& text) {
  return ConvertUnits<DomLib::XString>(text.data(), text.size(),
                                       [](wchar_t character) { return static_cast<XMLCh>(character); });
}

namespace DomLib {

XName::XName(const char* name) {
  const std::string_view text(name);
  if (text.size() < short_.size()) {
    std::transform(text.begin(), text.end(), short_.begin(), AsUnit);
  } else {
    long_ = AsXString(name);
  }
}

}  // namespace DomLib

std::wstring NonNullAttribute(const DOMElement& element, const char* name) {
  const XMLCh* value = element.getAttribute(DomLib::XName(name).Get());
  if (value == nullptr) throw "Null attribute value.";
  return AsWString(value);
}

bool AsBool(const std::wstring& text) {
  return text == L"true" || text == L"1";
}

std::wstring SubNodeText(const DOMElement& element, const char* name) {
  return DomLib::TextOf(DomLib::DescendantWalk(element).Next(DomLib::XName(name).Get()));
}

namespace DomLib {

std::wstring TextOf(const DOMElement* element) {
  if (element == nullptr) return {};
  std::wstring result;
  for (const DOMNode* child = element->getFirstChild(); child != nullptr; child = child->getNextSibling()) {
    if (child->getNodeType() == DOMNode::CDATA_SECTION_NODE) return AsWString(child->getNodeValue());
    if (child->getNodeType() != DOMNode::TEXT_NODE || IsBlank(child->getNodeValue())) continue;
    result = trim(AsWString(child->getNodeValue()), std::locale());  // the last one wins
  }
  return result;
}

}  // namespace DomLib

std::wstring trim(std::wstring text, const std::locale& locale) {
  const auto& characters = std::use_facet<std::ctype<wchar_t>>(locale);
  const auto isText = [&](wchar_t character) { return !characters.is(std::ctype_base::space, character); };
  text.erase(std::find_if(text.rbegin(), text.rend(), isText).base(), text.end());
  text.erase(text.begin(), std::find_if(text.begin(), text.end(), isText));
  return text;
}
