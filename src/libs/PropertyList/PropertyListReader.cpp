#include "libs/PropertyList/Base64Alphabet.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/Text/TextHelpers.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace PropertyList {
namespace {

constexpr std::string_view kBlanks = " \t\n";

// Thrown within this file only, and caught in Read.
struct Malformed {};

bool EqualIgnoringCase(std::string_view left, std::string_view right) {
  const auto lower = [](unsigned char c) { return std::tolower(c); };
  return std::ranges::equal(left, right, {}, lower, lower);
}

// US-ASCII is the part of UTF-8 that needs no more than one byte for a character.
bool IsReadable(std::string_view encoding) {
  return EqualIgnoringCase(encoding, "UTF-8") || EqualIgnoringCase(encoding, "US-ASCII");
}

std::string CharacterOfReference(std::string_view number) {
  const bool hexadecimal = number.starts_with('x');
  if (hexadecimal) number.remove_prefix(1);
  std::uint32_t character = 0;
  const char* const end = number.data() + number.size();
  const auto [stop, error] = std::from_chars(number.data(), end, character, hexadecimal ? 16 : 10);
  if (error != std::errc() || stop != end || character > 0x10FFFF) throw Malformed{};
  std::string text = WritableText(util::narrow(std::wstring(1, static_cast<wchar_t>(character))));
  if (text.empty()) throw Malformed{};
  return text;
}

// The text that "&name;" stands for.
std::string Referenced(std::string_view name) {
  if (name.starts_with('#')) return CharacterOfReference(name.substr(1));
  if (name == "amp") return "&";
  if (name == "lt") return "<";
  if (name == "gt") return ">";
  if (name == "quot") return "\"";
  if (name == "apos") return "'";
  throw Malformed{};
}

struct Tag {
  std::string_view name;
  bool isEmpty;  // <name/>
};

// Walks the marks of an XML text, whose line ends are single newlines.
class Scanner {
 public:
  explicit Scanner(std::string_view xml) : rest_(xml) {}

  [[nodiscard]] bool AtEnd() const { return rest_.empty(); }
  [[nodiscard]] bool AtEndTag() const { return rest_.starts_with("</"); }

  // From the start up to the root element.
  void Prolog() {
    if (rest_.size() > 5 && rest_.starts_with("<?xml") && kBlanks.find(rest_[5]) != std::string_view::npos) {
      Expect("<?xml");
      const std::string_view encoding = Attributes();
      if (!encoding.empty() && !IsReadable(encoding)) throw Malformed{};
      Expect("?>");
    }
    Miscellaneous();
    if (Take("<!DOCTYPE")) {
      DocumentType();
      Miscellaneous();
    }
  }

  // Blanks, comments and processing instructions.
  void Miscellaneous() {
    do {
      SkipBlanks();
    } while (TakeComment() || TakeInstruction());
  }

  Tag StartTag() {
    Expect("<");
    const std::string_view name = Name();
    Attributes();
    const bool isEmpty = Take("/");
    Expect(">");
    return {name, isEmpty};
  }

  void EndTag(std::string_view name) {
    Expect("</");
    Expect(name);
    SkipBlanks();
    Expect(">");
  }

  // Text up to the next tag, its references and CDATA sections resolved.
  std::string Content() {
    std::string text;
    while (true) {
      const std::size_t length = rest_.find_first_of("<&");
      if (length == std::string_view::npos) throw Malformed{};
      if (rest_.substr(0, length).find("]]>") != std::string_view::npos) throw Malformed{};
      text += rest_.substr(0, length);
      rest_.remove_prefix(length);
      if (Take("&")) {
        text += Referenced(TakeThrough(";"));
      } else if (Take("<![CDATA[")) {
        text += TakeThrough("]]>");
      } else if (!TakeComment() && !TakeInstruction()) {
        return text;
      }
    }
  }

 private:
  bool Take(std::string_view literal) {
    if (!rest_.starts_with(literal)) return false;
    rest_.remove_prefix(literal.size());
    return true;
  }

  void Expect(std::string_view literal) {
    if (!Take(literal)) throw Malformed{};
  }

  // Takes the closing mark too, and returns what is before it.
  std::string_view TakeThrough(std::string_view mark) {
    const std::size_t length = rest_.find(mark);
    if (length == std::string_view::npos) throw Malformed{};
    const std::string_view text = rest_.substr(0, length);
    rest_.remove_prefix(length + mark.size());
    return text;
  }

  void SkipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size())); }

  bool TakeComment() {
    if (!Take("<!--")) return false;
    TakeThrough("--");
    Expect(">");
    return true;
  }

  bool TakeInstruction() {
    if (!Take("<?")) return false;
    TakeThrough("?>");
    return true;
  }

  std::string_view Name() {
    const std::size_t length = std::min(rest_.find_first_of(" \t\n<>/=?&\"'"), rest_.size());
    if (length == 0) throw Malformed{};
    const std::string_view name = rest_.substr(0, length);
    rest_.remove_prefix(length);
    return name;
  }

  std::string_view Quoted() {
    SkipBlanks();
    if (Take("\"")) return TakeThrough("\"");
    Expect("'");
    return TakeThrough("'");
  }

  // Skips the attributes of a tag or of the XML declaration; returns the one named "encoding".
  std::string_view Attributes() {
    std::string_view encoding;
    for (SkipBlanks(); !rest_.starts_with('>') && !rest_.starts_with('/') && !rest_.starts_with('?');
         SkipBlanks()) {
      const std::string_view name = Name();
      SkipBlanks();
      Expect("=");
      const std::string_view value = Quoted();
      if (value.find('<') != std::string_view::npos) throw Malformed{};
      if (name == "encoding") encoding = value;
    }
    return encoding;
  }

  // Skips the declaration with its internal subset, whose entities are not resolved.
  void DocumentType() {
    bool inSubset = false;
    while (true) {
      if (TakeComment() || TakeInstruction()) continue;
      if (rest_.starts_with('"') || rest_.starts_with('\'')) {
        Quoted();
      } else if (!inSubset && Take(">")) {
        return;
      } else if (rest_.empty()) {
        throw Malformed{};
      } else {
        if (rest_.front() == '[') inSubset = true;
        if (rest_.front() == ']') inSubset = false;
        rest_.remove_prefix(1);
      }
    }
  }

  std::string_view rest_;
};

// Decimal digits, or hexadecimal ones after "0x".
std::uint64_t Magnitude(std::string_view digits) {
  const bool hexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
  if (hexadecimal) digits.remove_prefix(2);
  std::uint64_t number = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number, hexadecimal ? 16 : 10);
  if (error != std::errc() || stop != end) throw Malformed{};
  return number;
}

Value Integer(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const std::uint64_t magnitude = Magnitude(text);
  if (!negative) return magnitude;
  constexpr std::uint64_t kLargest = std::uint64_t{1} << 63;
  if (magnitude > kLargest) throw Malformed{};
  return static_cast<std::int64_t>(0 - magnitude);
}

// Infinity for a number too large, zero for one too small: from_chars does not tell which of them it met.
double OutOfRange(std::string_view number) {
  std::istringstream stream{std::string(number)};
  stream.imbue(std::locale::classic());
  double nearest = 0;
  stream >> nearest;
  return std::abs(nearest) < 1 ? nearest : std::copysign(std::numeric_limits<double>::infinity(), nearest);
}

// "nan" and "infinity" included, with any sign.
Value Real(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (stop != end) throw Malformed{};
  if (error == std::errc::result_out_of_range) return OutOfRange(text);
  if (error != std::errc()) throw Malformed{};
  return number;
}

constexpr std::uint8_t kNotBase64 = 64;

constexpr std::array<std::uint8_t, 256> kBase64Values = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(kNotBase64);
  for (std::size_t i = 0; i < kBase64Alphabet.size(); ++i) {
    values[static_cast<unsigned char>(kBase64Alphabet[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}();

Value Base64(std::string text) {
  std::erase_if(text, [](char c) { return kBlanks.find(c) != std::string_view::npos; });
  if (text.size() % 4 != 0) throw Malformed{};
  for (int padding = 0; padding < 2 && text.ends_with('='); ++padding) text.pop_back();
  Data data;
  std::uint32_t bits = 0;
  unsigned count = 0;
  for (const char c : text) {
    const std::uint8_t value = kBase64Values[static_cast<unsigned char>(c)];
    if (value == kNotBase64) throw Malformed{};
    bits = (bits << 6) | value;
    count += 6;
    if (count >= 8) {
      count -= 8;
      data.push_back(static_cast<std::byte>(bits >> count));
    }
  }
  return data;
}

Value Leaf(std::string_view kind, std::string text) {
  if (kind == "string") return text;
  if (kind == "integer") return Integer(util::Trimmed(text));
  if (kind == "real") return Real(util::Trimmed(text));
  if (kind == "date") return Date{std::move(text)};
  if (kind == "data") return Base64(std::move(text));
  if ((kind == "true" || kind == "false") && util::Trimmed(text).empty()) return kind == "true";
  throw Malformed{};
}

class Reader {
 public:
  explicit Reader(std::string_view xml) : scanner_(xml) {}

  Value Document() {
    scanner_.Prolog();
    const Tag plist = scanner_.StartTag();
    if (plist.name != "plist" || plist.isEmpty) throw Malformed{};
    scanner_.Miscellaneous();
    Value root = Element(0);
    scanner_.Miscellaneous();
    scanner_.EndTag(plist.name);
    scanner_.Miscellaneous();
    if (!scanner_.AtEnd()) throw Malformed{};
    return root;
  }

 private:
  Value Element(std::size_t containersAround) {
    const Tag tag = scanner_.StartTag();
    if (tag.name == "dict" || tag.name == "array") {
      if (containersAround == kMaximumDepth) throw Malformed{};
      if (tag.name == "dict") return Members(tag, containersAround + 1);
      return Elements(tag, containersAround + 1);
    }
    return Leaf(tag.name, TextOf(tag));
  }

  std::string TextOf(const Tag& tag) {
    if (tag.isEmpty) return {};
    std::string text = scanner_.Content();
    scanner_.EndTag(tag.name);
    return text;
  }

  // Steps to the next child of the container; at the end takes the end tag and returns false.
  bool NextChild(const Tag& container) {
    if (container.isEmpty) return false;
    scanner_.Miscellaneous();
    if (!scanner_.AtEndTag()) return true;
    scanner_.EndTag(container.name);
    return false;
  }

  Array Elements(const Tag& tag, std::size_t depth) {
    Array elements;
    while (NextChild(tag)) elements.push_back(Element(depth));
    return elements;
  }

  Dictionary Members(const Tag& tag, std::size_t depth) {
    std::vector<Entry> entries;
    while (NextChild(tag)) {
      const Tag keyTag = scanner_.StartTag();
      if (keyTag.name != "key") throw Malformed{};
      std::string key = TextOf(keyTag);
      scanner_.Miscellaneous();
      entries.push_back(Entry{std::move(key), Element(depth)});
    }
    return Dictionary(std::move(entries));
  }

  Scanner scanner_;
};

std::string WithSingleNewlines(std::string_view xml) {
  std::string text;
  text.reserve(xml.size());
  for (std::size_t i = 0; i < xml.size(); ++i) {
    const bool precedesNewline = i + 1 < xml.size() && xml[i + 1] == '\n';
    if (xml[i] != '\r') {
      text += xml[i];
    } else if (!precedesNewline) {
      text += '\n';
    }
  }
  return text;
}

}  // namespace

std::optional<Value> Read(std::string_view xml) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (xml.starts_with(kByteOrderMark)) xml.remove_prefix(kByteOrderMark.size());
  if (WritableText(xml) != xml) return std::nullopt;
  try {
    return Reader(WithSingleNewlines(xml)).Document();
  } catch (const Malformed&) {
    return std::nullopt;
  }
}

}  // namespace PropertyList
