#include "TerminalText.h"

#include "SRLib/TextHelpers.h"

#include <array>
#include <cstdio>
#include <cwchar>

namespace terminal {
namespace {

struct Range {
  wchar_t first;
  wchar_t last;
};

constexpr std::array<Range, 10> kSteering{{{0x00, 0x1F},
                                           {0x7F, 0x9F},
                                           {0xAD, 0xAD},
                                           {0x061C, 0x061C},
                                           {0x200B, 0x200F},
                                           {0x2028, 0x202E},
                                           {0x2060, 0x206F},
                                           {0xFEFF, 0xFEFF},
                                           {0xFFF9, 0xFFFB},
                                           {0xE0000, 0xE007F}}};

bool SteersTerminal(wchar_t character) {
  for (const Range& range : kSteering) {
    if (character >= range.first && character <= range.last) return true;
  }
  return false;
}

std::wstring Escaped(wchar_t character) {
  std::array<wchar_t, 16> text{};
  std::swprintf(text.data(), text.size(), L"\\u{%x}", static_cast<unsigned>(character));
  return text.data();
}

}  // namespace

std::string Visible(std::string_view utf8) {
  std::wstring visible;
  for (const wchar_t character : util::widen(utf8)) {
    if (SteersTerminal(character)) {
      visible += Escaped(character);
    } else {
      visible += character;
    }
  }
  return util::narrow(visible);
}

std::size_t Width(std::string_view utf8) {
  std::size_t width = 0;
  for (const wchar_t character : util::widen(utf8)) {
    const int columns = ::wcwidth(character);
    width += columns < 0 ? 1 : static_cast<std::size_t>(columns);
  }
  return width;
}

}  // namespace terminal
