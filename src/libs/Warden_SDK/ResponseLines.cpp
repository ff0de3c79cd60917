#include "libs/Warden_SDK/ResponseLines.h"

#include "libs/Text/TextHelpers.h"

#include <algorithm>
#include <cwchar>
#include <optional>

namespace Warden {
namespace {

constexpr std::size_t kLongestLine = std::size_t{64} * 1024;
constexpr std::size_t kMostLines = 1000;

bool IsForbidden(char character) {
  return util::IsAsciiControl(character) && character != '\t';
}

bool IsNameCharacter(char character) {
  constexpr std::string_view kSeparators = "()<>@,;:\\\"/[]?={} \t";
  const auto byte = static_cast<unsigned char>(character);
  return byte > 0x20 && byte < 0x7F && kSeparators.find(character) == std::string_view::npos;
}

std::optional<ResponseLine> LineOf(const wchar_t* wide) {
  const std::size_t length = ::wcsnlen(wide, kLongestLine + 1);
  if (length > kLongestLine) return std::nullopt;
  const std::string text = util::narrow(std::wstring_view(wide, length));
  if (text.size() > kLongestLine || std::any_of(text.begin(), text.end(), IsForbidden)) return std::nullopt;
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos || colon == 0) return std::nullopt;
  ResponseLine line{util::AsciiLowerCased(std::string_view(text).substr(0, colon)),
                    std::string(util::Trimmed(std::string_view(text).substr(colon + 1)))};
  if (!std::all_of(line.name.begin(), line.name.end(), IsNameCharacter)) return std::nullopt;
  return line;
}

}  // namespace

std::vector<ResponseLine> UsableLines(const wchar_t* const* lines) {
  std::vector<ResponseLine> usable;
  if (lines == nullptr) return usable;
  for (std::size_t index = 0; index < kMostLines && lines[index] != nullptr; ++index) {
    if (std::optional<ResponseLine> line = LineOf(lines[index])) usable.push_back(std::move(*line));
  }
  return usable;
}

}  // namespace Warden
