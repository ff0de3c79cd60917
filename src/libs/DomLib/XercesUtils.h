#pragma once

#include "libs/DomLib/XercesPlatform.h"

#include <xercesc/util/XercesDefs.hpp>

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

using XString = std::basic_string<XMLCh>;
// Each byte becomes one unit, sign-extended; null gives an empty string.
[[nodiscard]] XString AsXString(const char* text);
// Each wide character is cut to 16 bits.
[[nodiscard]] XString AsXString(const std::wstring& text);

// The attribute's value; empty when the attribute is missing. Throws the C string "Null attribute value."
// when the library has no value at all.
[[nodiscard]] std::wstring NonNullAttribute(const xercesc::DOMElement& element, const char* name);

// True exactly for "true" and "1".
[[nodiscard]] bool AsBool(const std::wstring& text);

// Text of the first descendant element of that name: a CDATA section as it stands, otherwise the last text
// child that is not blank, trimmed. Empty when there is no such element.
[[nodiscard]] std::wstring SubNodeText(const xercesc::DOMElement& element, const char* name);

// The text without leading and trailing characters that the locale classifies as space.
[[nodiscard]] std::wstring trim(std::wstring text, const std::locale& locale);
