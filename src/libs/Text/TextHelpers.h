#pragma once

#include <algorithm>
#include <string>
#include <string_view>

// Conversion between the core's wide text (one 32-bit code point per character) and UTF-8. Any thread.
namespace util {

// UTF-8 of the text. Surrogates and values outside Unicode are left out.
[[nodiscard]] std::string narrow(std::wstring_view text);

// The bytes of narrow(text).
[[nodiscard]] constexpr std::size_t NarrowedSize(std::wstring_view text) {
  std::size_t size = 0;
  for (const wchar_t wide : text) {
    const auto character = static_cast<char32_t>(wide);
    const bool isLeftOut = character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF);
    if (isLeftOut) continue;
    size += 1U + (character >= 0x80 ? 1U : 0U) + (character >= 0x800 ? 1U : 0U) +
            (character >= 0x10000 ? 1U : 0U);
  }
  return size;
}

// The code points of the UTF-8 text. Every byte that does not belong to a valid sequence is left out.
[[nodiscard]] std::wstring widen(std::string_view utf8);

// Whether the bytes are valid UTF-8 throughout.
[[nodiscard]] bool IsUTF8(std::string_view bytes);

// Whether Unicode keeps the code point for a program's own use; the bus takes no text with one.
[[nodiscard]] constexpr bool IsNoncharacter(wchar_t character) {
  return (character >= 0xFDD0 && character <= 0xFDEF) || (character & 0xFFFE) == 0xFFFE;
}

// Control characters, those from 0x7F on included; tabs and the ends of lines are white space.
[[nodiscard]] constexpr bool IsControl(wchar_t character) {
  const bool isSpace = character == L'\t' || character == L'\n' || character == L'\r';
  return !isSpace && (character < 0x20 || (character >= 0x7F && character < 0xA0));
}

// The same of one byte of a text, tabs and the ends of lines counted: none belongs into one line.
[[nodiscard]] constexpr bool IsAsciiControl(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte < 0x20 || byte == 0x7F;
}

// The part of the text between the blanks and newlines at its ends.
[[nodiscard]] constexpr std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanksAndNewlines = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanksAndNewlines);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanksAndNewlines) - first + 1);
}

// The letters A to Z in lower case, everything else as it is, whatever the locale.
[[nodiscard]] constexpr char AsciiLower(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}
[[nodiscard]] inline std::string AsciiLowerCased(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), AsciiLower);
  return lower;
}

}  // namespace util
