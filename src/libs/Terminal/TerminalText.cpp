#include "libs/Terminal/TerminalText.h"

#include "libs/Address/SplitURL.h"
#include "libs/Text/HiddenCharacters.h"
#include "libs/Text/TextHelpers.h"

#include <algorithm>
#include <array>
#include <cwchar>

namespace Terminal {
namespace {

constexpr wchar_t kReplacement = L'\uFFFD';
constexpr wchar_t kEllipsis = L'\u2026';
constexpr std::string_view kIndentation = "  ";

struct Range {
  wchar_t first;
  wchar_t last;
};

constexpr std::array kBlanks{Range{0x20, 0x20},     Range{0xA0, 0xA0},     Range{0x1680, 0x1680},
                             Range{0x2000, 0x200A}, Range{0x202F, 0x202F}, Range{0x205F, 0x205F},
                             Range{0x2800, 0x2800}, Range{0x3000, 0x3000}};

bool IsBlank(wchar_t character) {
  return std::any_of(kBlanks.begin(), kBlanks.end(), [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

std::wstring Cut(std::wstring text, std::size_t maximumCharacters) {
  if (text.size() <= maximumCharacters) return text;
  text.resize(maximumCharacters);
  return text += kEllipsis;
}

// How many characters fit into a line; one at least.
std::size_t Fitting(std::wstring_view text, std::size_t columns) {
  constexpr wchar_t kLastAscii = 0x7F;
  std::size_t used = 0;
  for (std::size_t index = 0; index < text.size(); ++index) {
    used += text[index] <= kLastAscii ? 1 : 2;
    if (used > columns) return std::max<std::size_t>(index, 1);
  }
  return text.size();
}

// Where the first line of the text ends.
std::size_t LineEnd(std::wstring_view text, std::size_t columns) {
  const std::size_t fitting = Fitting(text, columns);
  if (fitting == text.size()) return fitting;
  const std::size_t blank = text.rfind(L' ', fitting);
  return blank == std::wstring_view::npos || blank == 0 ? fitting : blank;
}

std::string_view TakeLine(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

bool IsAddress(std::string_view line) {
  return line.find("://") != std::string_view::npos && line.find(' ') == std::string_view::npos;
}

}  // namespace

std::string OneLine(std::string_view utf8, std::size_t maximumCharacters) {
  std::wstring text = Cut(util::widen(utf8), maximumCharacters);
  std::replace_if(text.begin(), text.end(), util::IsHidden, kReplacement);
  return util::narrow(text);
}

std::string SingleBlanks(std::string_view utf8) {
  std::wstring text;
  bool blank = false;
  for (const wchar_t character : util::widen(utf8)) {
    if (!IsBlank(character)) {
      if (blank && !text.empty()) text += L' ';
      text += character;
    }
    blank = IsBlank(character);
  }
  return util::narrow(text);
}

std::vector<std::string> Folded(std::string_view utf8, std::size_t columns) {
  const std::wstring text = util::widen(utf8);
  std::wstring_view rest = text;
  std::vector<std::string> lines;
  do {
    const std::size_t end = LineEnd(rest, columns);
    lines.push_back(util::narrow(rest.substr(0, end)));
    rest.remove_prefix(std::min(rest.find_first_not_of(L' ', end), rest.size()));
  } while (!rest.empty());
  return lines;
}

std::vector<std::string> AddressLines(std::string_view utf8) {
  const std::optional<std::string> page = Address::SplitURL(utf8).page;
  const std::size_t pathLength = page ? page->size() + 1 : 0;
  std::vector<std::string> lines{OneLine(SingleBlanks(utf8.substr(0, utf8.size() - pathLength)))};
  if (page && !page->empty()) lines.push_back(OneLine("/" + SingleBlanks(*page), kLongestText));
  return lines;
}

std::string Indented(std::string_view utf8, std::size_t columns) {
  const std::size_t textColumns = columns > kIndentation.size() ? columns - kIndentation.size() : 1;
  std::string indented;
  do {
    const std::string line = SingleBlanks(TakeLine(utf8));
    for (const std::string& part : IsAddress(line) ? AddressLines(line) : std::vector{OneLine(line)}) {
      for (const std::string& folded : Folded(part, textColumns)) {
        if (!indented.empty()) indented += '\n';
        indented += kIndentation;
        indented += folded;
      }
    }
  } while (!utf8.empty());
  return indented;
}

std::size_t Width(std::string_view utf8) {
  std::size_t width = 0;
  for (const wchar_t character : util::widen(utf8)) {
    const int columns = ::wcwidth(character);
    width += columns < 0 ? 1 : static_cast<std::size_t>(columns);
  }
  return width;
}

}  // namespace Terminal
