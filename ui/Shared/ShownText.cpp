#include "Shared/ShownText.h"

#include "libs/Address/SplitURL.h"
#include "libs/Terminal/TerminalText.h"
#include "libs/Text/HiddenCharacters.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Wording/Pattern.h"

#include <algorithm>
#include <optional>

namespace Windows::ShownText {
namespace {

constexpr wchar_t kEllipsis = L'\u2026';
constexpr std::string_view kFirstStrongIsolate = "\u2068";
constexpr std::string_view kPopDirectionalIsolate = "\u2069";

bool IsBlank(wchar_t character) {
  return Terminal::SingleBlanks(util::narrow({&character, 1})).empty();
}

bool IsBetweenWords(std::wstring_view text, std::size_t index) {
  return index > 0 && index + 1 < text.size() && !IsBlank(text[index - 1]) && !IsBlank(text[index + 1]);
}

bool StandsForItself(std::wstring_view text, std::size_t index) {
  const wchar_t character = text[index];
  if (IsBlank(character)) return character == L' ' && IsBetweenWords(text, index);
  return character != L'<' && !util::IsHidden(character);
}

}  // namespace

std::string Whole(std::string_view foreign) {
  return util::WithHiddenShown(util::widen(Terminal::SingleBlanks(foreign)));
}

std::string Name(std::string_view foreign) {
  std::wstring text = util::widen(Terminal::SingleBlanks(foreign));
  const bool isLong = text.size() > kLongestName;
  if (isLong) text.resize(kLongestName);
  std::string shown = util::WithHiddenShown(text);
  if (isLong) shown += util::narrow({&kEllipsis, 1});
  return shown;
}

std::string Exact(std::string_view foreign) {
  const std::wstring text = util::widen(foreign);
  std::string shown;
  for (std::size_t index = 0; index < text.size(); ++index) {
    shown += StandsForItself(text, index) ? util::narrow({&text[index], 1}) : util::CodeOf(text[index]);
  }
  return shown;
}

std::string Lines(std::string_view foreign) {
  std::string lines;
  while (true) {
    const std::size_t end = std::min(foreign.find('\n'), foreign.size());
    lines += Whole(foreign.substr(0, end));
    if (end == foreign.size()) return lines;
    lines += '\n';
    foreign.remove_prefix(end + 1);
  }
}

std::string Isolated(std::string_view shown) {
  std::string isolated(kFirstStrongIsolate);
  for (const char character : shown) {
    if (character == '\n') isolated += kPopDirectionalIsolate;
    isolated += character;
    if (character == '\n') isolated += kFirstStrongIsolate;
  }
  return isolated += kPopDirectionalIsolate;
}

std::string Sentence(std::string_view pattern, const std::vector<Place>& places) {
  return Wording::Filled(pattern, [&places](std::string_view name) -> std::optional<std::string> {
    const auto place = std::ranges::find(places, name, &Place::name);
    if (place == places.end()) return std::nullopt;
    return Isolated(place->shown);
  });
}

std::string HostOf(std::string_view url) {
  return url.empty() ? std::string() : Whole(Address::SplitURL(url).server);
}

std::string ServerOf(std::string_view url) {
  const Address::SplitURL split(url);
  const bool isUsual = split.port.empty() || split.port == split.DefaultPort();
  return isUsual ? HostOf(url) : HostOf(url) + ":" + Whole(split.port);
}

}  // namespace Windows::ShownText
