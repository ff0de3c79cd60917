#include "libs/PropertyList/Base64Alphabet.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/Text/TextHelpers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace PropertyList {
namespace {

constexpr std::string_view kHeader =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<plist version=\"1.0\">\n";

bool IsAscii(char character) {
  return static_cast<unsigned char>(character) < 0x80;
}

// Whether the character stands for itself, whatever is around it.
bool IsPlain(char character) {
  return character >= ' ' && IsAscii(character) && character != '&' && character != '<' && character != '>';
}

// Whether the text may hold something that XML does not allow; a cheap test that clean text passes.
bool NeedsCleaning(std::string_view text) {
  const auto isSuspect = [](char c) { return !IsWritable(static_cast<unsigned char>(c)); };
  if (std::ranges::any_of(text, isSuspect)) return true;
  if (std::ranges::all_of(text, IsAscii)) return false;
  return text.find("\xEF\xBF") != std::string_view::npos || !util::IsUTF8(text);
}

void AppendClean(std::string_view text, std::string& out) {
  for (const char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '\r':  // a bare one would be read back as a newline
        out += "&#13;";
        break;
      default:
        out += c;
    }
  }
}

void AppendEscaped(std::string_view text, std::string& out) {
  if (std::ranges::all_of(text, IsPlain)) {
    out += text;
  } else {
    AppendClean(WritableText(text), out);
  }
}

// The shortest text that reads back as the same number, whatever the locale.
std::string RealText(double number) {
  if (std::isnan(number)) return "nan";
  if (std::isinf(number)) return number > 0 ? "+infinity" : "-infinity";
  std::array<char, 32> text{};
  const auto result = std::to_chars(text.data(), text.data() + text.size(), number);
  return std::string(text.data(), result.ptr);
}

// Base64 with padding.
std::string Base64Text(const Data& data) {
  std::string text;
  for (std::size_t i = 0; i < data.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, data.size() - i);
    std::uint32_t bits = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      bits = (bits << 8) | (k < count ? std::to_integer<std::uint32_t>(data[i + k]) : 0);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= count ? kBase64Alphabet[(bits >> (18 - 6 * k)) & 0x3F] : '=';
    }
  }
  return text;
}

class Writer {
 public:
  std::string Document(const Value& root, std::size_t expectedBytes) {
    constexpr std::size_t kRoomToGrow = 4096;
    out_.reserve(expectedBytes + kRoomToGrow);
    out_ = kHeader;
    WriteValue(root, 0);
    out_ += "</plist>\n";
    return std::move(out_);
  }

 private:
  // The depth is the number of containers around the value, and its indentation.
  void WriteValue(const Value& value, std::size_t depth) {
    std::visit([this, depth](const auto& kind) { Write(kind, depth); }, value.Get());
  }

  static bool IsTooDeep(const Value& value, std::size_t depth) {
    return depth >= kMaximumDepth && (value.As<Dictionary>() != nullptr || value.As<Array>() != nullptr);
  }

  void Write(const Dictionary& dictionary, std::size_t depth) {
    if (dictionary.Empty()) return Line("<dict/>", depth);
    Line("<dict>", depth);
    for (const Entry& entry : dictionary.Entries()) {
      if (IsTooDeep(entry.value, depth + 1)) continue;
      Text("key", entry.key, depth + 1);
      WriteValue(entry.value, depth + 1);
    }
    Line("</dict>", depth);
  }

  void Write(const Array& array, std::size_t depth) {
    if (array.empty()) return Line("<array/>", depth);
    Line("<array>", depth);
    for (const Value& value : array) {
      if (!IsTooDeep(value, depth + 1)) WriteValue(value, depth + 1);
    }
    Line("</array>", depth);
  }

  void Write(const std::string& text, std::size_t depth) { Text("string", text, depth); }
  void Write(std::int64_t number, std::size_t depth) { Element("integer", std::to_string(number), depth); }
  void Write(std::uint64_t number, std::size_t depth) { Element("integer", std::to_string(number), depth); }
  void Write(double number, std::size_t depth) { Element("real", RealText(number), depth); }
  void Write(bool value, std::size_t depth) { Line(value ? "<true/>" : "<false/>", depth); }
  void Write(const Date& date, std::size_t depth) { Text("date", date.text, depth); }

  void Write(const Data& data, std::size_t depth) {
    constexpr std::size_t kLineLength = 76;
    const std::string text = Base64Text(data);
    Line("<data>", depth);
    for (std::size_t i = 0; i < text.size(); i += kLineLength) Line(text.substr(i, kLineLength), depth);
    Line("</data>", depth);
  }

  // An element whose content is markup already.
  void Element(std::string_view name, std::string_view content, std::size_t depth) {
    Begin(name, depth);
    out_ += content;
    End(name);
  }

  void Text(std::string_view name, std::string_view content, std::size_t depth) {
    Begin(name, depth);
    AppendEscaped(content, out_);
    End(name);
  }

  void Begin(std::string_view name, std::size_t depth) {
    out_.append(depth, '\t').append("<").append(name).append(">");
  }
  void End(std::string_view name) { out_.append("</").append(name).append(">\n"); }

  void Line(std::string_view text, std::size_t depth) { out_.append(depth, '\t').append(text).append("\n"); }

  std::string out_;
};

}  // namespace

std::string Write(const Value& root, std::size_t expectedBytes) {
  return Writer().Document(root, expectedBytes);
}

std::string WritableText(std::string_view text) {
  if (!NeedsCleaning(text)) return std::string(text);
  std::wstring characters = util::widen(text);
  std::erase_if(characters, [](wchar_t character) { return !IsWritable(character); });
  return util::narrow(characters);
}

}  // namespace PropertyList
