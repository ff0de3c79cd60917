#pragma once

#include "libs/DomLib/XercesPlatform.h"

#include <xercesc/util/XercesDefs.hpp>

#include <array>
#include <locale>
#include <string>

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
class DOMNode;
XERCES_CPP_NAMESPACE_END

// The library's strings are 16-bit units, the program's wide strings hold 32-bit characters. These
// conversions go unit by unit: no surrogates are paired, none are made.

// Each unit becomes one wide character. The argument must not be null.
[[nodiscard]] std::wstring AsWString(const XMLCh* text);
// Each unit is cut to 8 bits; null gives an empty string.
[[nodiscard]] std::string AsString(const XMLCh* text);

namespace DomLib {

using XString = std::basic_string<XMLCh>;

}  // namespace DomLib

// Each byte becomes one unit, sign-extended; null gives an empty string.
[[nodiscard]] DomLib::XString AsXString(const char* text);
// Each wide character is cut to 16 bits.
[[nodiscard]] DomLib::XString AsXString(const std::wstring& text);

namespace DomLib {

// A name out of the program in the library's units, as AsXString makes them, without asking the heap for room
// that the usual short one does not need.
class XName {
 public:
  explicit XName(const char* name);
  XName(const XName&) = delete;
  XName& operator=(const XName&) = delete;

  // Good as long as this object.
  [[nodiscard]] const XMLCh* Get() const { return long_.empty() ? short_.data() : long_.c_str(); }

 private:
  std::array<XMLCh, 24> short_{};
  XString long_;  // empty where the name fits above
};

// Whether the names are the same; neither is null. Most differ in their first unit, and are many.
[[nodiscard]] inline bool AreSameName(const XMLCh* left, const XMLCh* right) {
  while (*left == *right && *left != 0) ++left, ++right;
  return *left == *right;
}

}  // namespace DomLib

// The attribute's value; empty when the attribute is missing. Throws the C string "Null attribute value."
// when the library has no value at all.
[[nodiscard]] std::wstring NonNullAttribute(const xercesc::DOMElement& element, const char* name);

// True exactly for "true" and "1".
[[nodiscard]] bool AsBool(const std::wstring& text);

namespace DomLib {

// The element's own text: a CDATA section as it stands, otherwise the last text child that is not blank,
// trimmed. Empty for null.
[[nodiscard]] std::wstring TextOf(const xercesc::DOMElement* element);

}  // namespace DomLib

// The text of the first descendant element of that name.
[[nodiscard]] std::wstring SubNodeText(const xercesc::DOMElement& element, const char* name);

// The text without leading and trailing characters that the locale classifies as space.
[[nodiscard]] std::wstring trim(std::wstring text, const std::locale& locale);
