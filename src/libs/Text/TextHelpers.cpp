#include "libs/Text/TextHelpers.h"

#include <cstddef>
#include <type_traits>

namespace util {
namespace {

constexpr char32_t kFirstSurrogate = 0xD800;
constexpr char32_t kLastSurrogate = 0xDFFF;
constexpr char32_t kLastCodePoint = 0x10FFFF;

bool IsSurrogate(char32_t character) {
  return character >= kFirstSurrogate && character <= kLastSurrogate;
}

void AppendUTF8(char32_t c, std::string& out) {
  const auto byte = [&out](char32_t value) { out += static_cast<char>(static_cast<unsigned char>(value)); };
  const auto continuation = [&](unsigned shift) { byte(0x80 | ((c >> shift) & 0x3F)); };
  if (c < 0x80) {
    byte(c);
  } else if (c < 0x800) {
    byte(0xC0 | (c >> 6));
    continuation(0);
  } else if (c < 0x10000) {
    byte(0xE0 | (c >> 12));
    continuation(6);
    continuation(0);
  } else {
    byte(0xF0 | (c >> 18));
    continuation(12);
    continuation(6);
    continuation(0);
  }
}

// The shape of a sequence by its lead byte: its length, the bits that the lead carries, the smallest value
// that is not overlong. Length 0: not a lead byte.
struct Sequence {
  std::size_t length;
  unsigned char leadMask;
  char32_t smallest;
};

Sequence SequenceOf(unsigned char lead) {
  if (lead < 0x80) return {1, 0x7F, 0};
  if ((lead & 0xE0) == 0xC0) return {2, 0x1F, 0x80};
  if ((lead & 0xF0) == 0xE0) return {3, 0x0F, 0x800};
  if ((lead & 0xF8) == 0xF0) return {4, 0x07, 0x10000};
  return {0, 0, 0};
}

// Decodes the sequence at the start of the bytes; its length is 0 when it is not valid.
struct Decoded {
  char32_t character;
  std::size_t length;
};

Decoded DecodeFirst(std::string_view bytes) {
  const Sequence sequence = SequenceOf(static_cast<unsigned char>(bytes[0]));
  if (sequence.length == 0 || sequence.length > bytes.size()) return {0, 0};
  char32_t character = static_cast<unsigned char>(bytes[0]) & sequence.leadMask;
  for (std::size_t i = 1; i < sequence.length; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if ((byte & 0xC0) != 0x80) return {0, 0};
    character = (character << 6) | (byte & 0x3F);
  }
  const bool valid = character >= sequence.smallest && character <= kLastCodePoint && !IsSurrogate(character);
  return {character, valid ? sequence.length : 0};
}

// The characters in front of the first one outside ASCII, which are the same in both forms.
template <class Text>
Text AsciiStart(Text text) {
  using Code = std::make_unsigned_t<typename Text::value_type>;
  constexpr std::size_t kBlock = 32;  // characters that are looked at without a branch
  std::size_t length = 0;
  const auto outside = [&text](std::size_t first, std::size_t count) {
    Code all = 0;
    for (std::size_t i = first; i < first + count; ++i) all |= static_cast<Code>(text[i]);
    return all >= 0x80;
  };
  while (text.size() - length >= kBlock && !outside(length, kBlock)) length += kBlock;
  while (length < text.size() && !outside(length, 1)) ++length;
  return text.substr(0, length);
}

template <class To, class Text>
void AppendAscii(Text ascii, To& out) {
  const std::size_t before = out.size();
  out.resize(before + ascii.size());
  std::transform(ascii.begin(), ascii.end(), out.begin() + static_cast<std::ptrdiff_t>(before),
                 [](auto character) { return static_cast<typename To::value_type>(character); });
}

}  // namespace

std::string narrow(std::wstring_view text) {
  std::string utf8;
  utf8.reserve(text.size());
  while (true) {
    const std::wstring_view ascii = AsciiStart(text);
    AppendAscii(ascii, utf8);
    text.remove_prefix(ascii.size());
    if (text.empty()) return utf8;
    const auto character = static_cast<char32_t>(text.front());
    if (character <= kLastCodePoint && !IsSurrogate(character)) AppendUTF8(character, utf8);
    text.remove_prefix(1);
  }
}

std::wstring widen(std::string_view utf8) {
  std::wstring text;
  text.reserve(utf8.size());
  while (true) {
    const std::string_view ascii = AsciiStart(utf8);
    AppendAscii(ascii, text);
    utf8.remove_prefix(ascii.size());
    if (utf8.empty()) return text;
    const Decoded first = DecodeFirst(utf8);
    if (first.length != 0) text += static_cast<wchar_t>(first.character);
    utf8.remove_prefix(std::max<std::size_t>(first.length, 1));
  }
}

bool IsUTF8(std::string_view bytes) {
  while (true) {
    bytes.remove_prefix(AsciiStart(bytes).size());
    if (bytes.empty()) return true;
    const std::size_t length = DecodeFirst(bytes).length;
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
}

}  // namespace util
