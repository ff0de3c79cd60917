#include "libs/Text/LogText.h"

#include "libs/Text/TextHelpers.h"

#include <algorithm>

namespace util::LogText {
namespace {

constexpr std::string_view kSchemeEnd = "://";
constexpr std::string_view kPunctuation = ".,:;)";

std::string PublicAddress(std::string_view address) {
  const std::size_t start = address.find(kSchemeEnd);
  const std::size_t authority = start == std::string_view::npos ? 0 : start + kSchemeEnd.size();
  const std::size_t authorityEnd = std::min(address.find_first_of("/?#", authority), address.size());
  const std::size_t userEnd = address.substr(0, authorityEnd).rfind('@');
  const std::size_t host = userEnd == std::string_view::npos || userEnd < authority ? authority : userEnd + 1;
  const std::size_t end = std::min(address.find_first_of("?#", host), address.size());
  std::string shown(address.substr(0, authority));
  shown += address.substr(host, end - host);
  return shown;
}

// An address that ends a clause keeps the clause's punctuation.
std::string PublicWord(std::string_view word) {
  if (word.find(kSchemeEnd) == std::string_view::npos) return std::string(word);
  const std::size_t end = word.find_last_not_of(kPunctuation) + 1;
  return PublicAddress(word.substr(0, end)).append(word.substr(end));
}

// The length of the control character or line separator at the start of the text; 0 when there is none.
std::size_t ControlLength(std::string_view text) {
  if (util::IsAsciiControl(text[0])) return 1;
  if (text[0] == '\xC2' && text.size() > 1 && static_cast<unsigned char>(text[1]) - 0x80U < 0x20U) return 2;
  return text.starts_with("\xE2\x80\xA8") || text.starts_with("\xE2\x80\xA9") ? 3 : 0;
}

std::string WithoutControls(std::string_view text) {
  std::string line;
  while (!text.empty()) {
    const std::size_t control = ControlLength(text);
    line += control == 0 ? text[0] : ' ';
    text.remove_prefix(std::max<std::size_t>(control, 1));
  }
  return line;
}

}  // namespace

std::string Line(std::string_view utf8) {
  std::string line;
  while (!utf8.empty()) {
    const std::size_t end = std::min(utf8.find_first_of(" \""), utf8.size());
    line += PublicWord(utf8.substr(0, end));
    if (end != utf8.size()) line += utf8[end];
    utf8.remove_prefix(std::min(end + 1, utf8.size()));
  }
  return WithoutControls(line);
}

std::string Address(std::string_view utf8) {
  return WithoutControls(PublicAddress(utf8));
}

}  // namespace util::LogText
