#include "TerminalText.h"

#include <array>
#include <cstdint>

namespace TerminalText {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kEllipsis = "\xE2\x80\xA6";
constexpr std::string_view kIndentation = "  ";

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

constexpr std::array<Range, 10> kUnfit{{{0x00, 0x1F},
                                        {0x7F, 0x9F},
                                        {0xAD, 0xAD},
                                        {0x061C, 0x061C},
                                        {0x200B, 0x200F},
                                        {0x2028, 0x202E},
                                        {0x2060, 0x206F},
                                        {0xFEFF, 0xFEFF},
                                        {0xFFF9, 0xFFFB},
                                        {0xE0000, 0xE007F}}};

bool IsUnfit(std::uint32_t character) {
  for (const Range& range : kUnfit) {
    if (character >= range.first && character <= range.last) return true;
  }
  return false;
}

struct Character {
  std::string_view bytes;
  bool fit;
};

std::size_t LengthFromLeadByte(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead < 0xE0) return 2;
  if (lead >= 0xE0 && lead < 0xF0) return 3;
  return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

// The first character of a text that is not empty. A byte that belongs to no valid sequence stands alone.
Character FirstOf(std::string_view text) {
  const Character stray{text.substr(0, 1), false};
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = LengthFromLeadByte(lead);
  if (length == 0 || length > text.size()) return stray;
  std::uint32_t value = length == 1 ? lead : lead & (0xFFU >> (length + 1));
  for (const char byte : text.substr(1, length - 1)) {
    const auto next = static_cast<unsigned char>(byte);
    if ((next & 0xC0U) != 0x80U) return stray;
    value = (value << 6) | (next & 0x3FU);
  }
  constexpr std::array<std::uint32_t, 5> kLeastOfLength{0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
  if (value < kLeastOfLength[length] || value > 0x10FFFF || surrogate) return stray;
  return {text.substr(0, length), !IsUnfit(value)};
}

std::string Fit(std::string_view text, std::size_t maximumCharacters, bool keepLineBreaks) {
  std::string fit;
  for (std::size_t count = 0; !text.empty(); ++count) {
    if (count == maximumCharacters) return fit += kEllipsis;
    const Character first = FirstOf(text);
    const bool lineBreak = keepLineBreaks && first.bytes == "\n";
    if (lineBreak) {
      fit += '\n';
      fit += kIndentation;
    } else {
      fit += first.fit ? first.bytes : kReplacement;
    }
    text.remove_prefix(first.bytes.size());
  }
  return fit;
}

}  // namespace

std::string OneLine(std::string_view utf8, std::size_t maximumCharacters) {
  return Fit(utf8, maximumCharacters, false);
}

std::string Indented(std::string_view utf8, std::size_t maximumCharacters) {
  return std::string(kIndentation) + Fit(utf8, maximumCharacters, true);
}

}  // namespace TerminalText
