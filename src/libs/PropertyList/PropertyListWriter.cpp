#include "libs/PropertyList/Base64Alphabet.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/Text/TextHelpers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <functional>
#include <optional>

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
  explicit Writer(std::size_t expectedBytes) {
    constexpr std::size_t kRoomToGrow = 4096;
    out_.reserve(expectedBytes + kRoomToGrow);
  }

  // Appends what is a part of the document already.
  void Append(std::string_view lines) { out_ += lines; }
  [[nodiscard]] std::string Document() { return std::move(out_); }

  // The depth is the number of containers around the value, and its indentation.
  void WriteValue(const Value& value, std::size_t depth) {
    std::visit([this, depth](const auto& kind) { Write(kind, depth); }, value.Get());
  }

 private:
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

// Whether the two are known to be written alike, without looking into containers. Reals that are equal need
// not be: there are two zeros.
bool AreSame(const Value& one, const Value& other) {
  if (one.As<Array>() != nullptr || one.As<double>() != nullptr) return false;
  const auto* const dictionary = one.As<Dictionary>();
  const auto* const otherDictionary = other.As<Dictionary>();
  if (dictionary == nullptr || otherDictionary == nullptr) return one == other;
  return dictionary->SharesEntriesWith(*otherDictionary);
}

// A dictionary and what was under its name before.
struct ChangedDictionary {
  std::string_view key;
  const Dictionary* now;
  const Dictionary* before;
};

// The one dictionary in which all differences lie, when neither it nor what it was is empty.
std::optional<ChangedDictionary> OnlyChange(const Dictionary& now, const Dictionary& before) {
  const auto isSame = [](const Entry& one, const Entry& other) {
    return one.key == other.key && AreSame(one.value, other.value);
  };
  const auto [entry, entryBefore] = std::ranges::mismatch(now.Entries(), before.Entries(), isSame);
  if (entry == now.Entries().end() || entryBefore == before.Entries().end()) return std::nullopt;
  if (entry->key != entryBefore->key) return std::nullopt;
  if (!std::ranges::equal(entry + 1, now.Entries().end(), entryBefore + 1, before.Entries().end(), isSame))
    return std::nullopt;
  const ChangedDictionary change{entry->key, entry->value.As<Dictionary>(),
                                 entryBefore->value.As<Dictionary>()};
  if (change.now == nullptr || change.before == nullptr || change.now->Empty() || change.before->Empty())
    return std::nullopt;
  return change;
}

// The line of the name of an entry at `depth`. Nothing else in a document looks like it: a text has no tags,
// and what lies deeper has more tabs.
std::string NameLine(std::string_view key, std::size_t depth) {
  std::string line = "\n";
  line.append(depth, '\t').append("<key>");
  AppendEscaped(key, line);
  return line += "</key>\n";
}

// What is left behind the piece. Skips through the text, in which lines begin everywhere.
std::string_view Behind(std::string_view piece, std::string_view text) {
  const std::boyer_moore_horspool_searcher search(piece.begin(), piece.end());
  return {search(text.begin(), text.end()).second, text.end()};
}

}  // namespace

std::string Write(const Value& root, std::size_t expectedBytes) {
  Writer writer(expectedBytes);
  writer.Append(kHeader);
  writer.WriteValue(root, 0);
  writer.Append("</plist>\n");
  return writer.Document();
}

std::string WriteChange(const Dictionary& root, const Dictionary& before, std::string_view textBefore) {
  const Dictionary* changed = &root;
  std::string_view rest = textBefore.substr(kHeader.size());
  std::size_t depth = 0;
  for (auto change = OnlyChange(root, before); change && depth + 1 < kMaximumDepth;
       change = OnlyChange(*change->now, *change->before)) {
    rest = Behind(NameLine(change->key, ++depth), rest);
    changed = change->now;
  }
  if (depth == 0) return Write(root, textBefore.size());
  Writer writer(textBefore.size());
  writer.Append({textBefore.begin(), rest.begin()});
  writer.WriteValue(*changed, depth);
  const std::string lastLine = '\n' + std::string(depth, '\t') + "</dict>\n";
  writer.Append(Behind(lastLine, rest));
  return writer.Document();
}

std::string WritableText(std::string_view text) {
  if (!NeedsCleaning(text)) return std::string(text);
  std::wstring characters = util::widen(text);
  std::erase_if(characters, [](wchar_t character) { return !IsWritable(character); });
  return util::narrow(characters);
}

}  // namespace PropertyList
