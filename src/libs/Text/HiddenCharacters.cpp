#include "libs/Text/HiddenCharacters.h"

#include "libs/Text/TextHelpers.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace util {
namespace {

struct Range {
  wchar_t first;
  wchar_t last;
};

// Controls, ends of lines and paragraphs, all that Unicode calls default-ignorable, and what else has no
// glyph: marks of annotations, the null note head.
constexpr std::array kHidden{
    Range{0x00, 0x1F},       Range{0x7F, 0x9F},       Range{0xAD, 0xAD},       Range{0x034F, 0x034F},
    Range{0x061C, 0x061C},   Range{0x115F, 0x1160},   Range{0x17B4, 0x17B5},   Range{0x180B, 0x180F},
    Range{0x200B, 0x200F},   Range{0x2028, 0x202E},   Range{0x2060, 0x206F},   Range{0x3164, 0x3164},
    Range{0xFE00, 0xFE0F},   Range{0xFEFF, 0xFEFF},   Range{0xFFA0, 0xFFA0},   Range{0xFFF0, 0xFFFB},
    Range{0x1BCA0, 0x1BCA3}, Range{0x1D159, 0x1D159}, Range{0x1D173, 0x1D17A}, Range{0xE0000, 0xE0FFF}};

}  // namespace

bool IsHidden(wchar_t character) {
  return std::any_of(kHidden.begin(), kHidden.end(), [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

std::string CodeOf(wchar_t character) {
  std::array<char, 16> code{};
  std::snprintf(code.data(), code.size(), "<U+%04X>", static_cast<unsigned>(character));
  return code.data();
}

std::string WithHiddenShown(std::wstring_view text) {
  std::string shown;
  for (const wchar_t character : text) {
    shown += IsHidden(character) ? CodeOf(character) : narrow({&character, 1});
  }
  return shown;
}

}  // namespace util
