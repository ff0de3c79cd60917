#pragma once

#include "libs/PropertyList/CopyOnWrite.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// The XML property list: a tree of dictionaries, arrays and typed values, kept in files of the public format.
// All text is UTF-8. Values are plain: copied freely, owned by whatever holds them, used from any thread.
namespace PropertyList {

class Value;
struct Entry;

// Containers within containers, the root counted. Read refuses deeper ones, Write leaves them out.
inline constexpr std::size_t kMaximumDepth = 512;

using Array = std::vector<Value>;
using Data = std::vector<std::byte>;

// A point in time, kept as the file spells it (ISO 8601, "2026-11-14T11:56:13Z").
struct Date {
  std::string text;
  bool operator==(const Date&) const = default;
};

// Named values in the order in which they were first set; names are unique and case-sensitive. Copies share
// their entries until one is changed, so a change of a tree costs what lies on the way to it.
class Dictionary {
 public:
  Dictionary();
  Dictionary(std::initializer_list<Entry> entries);
  // Of two entries with one name the later value counts, in the place of the first.
  explicit Dictionary(std::vector<Entry> entries);
  Dictionary(const Dictionary&);
  Dictionary(Dictionary&&) noexcept;
  Dictionary& operator=(const Dictionary&);
  Dictionary& operator=(Dictionary&&) noexcept;
  ~Dictionary();

  // The value under the name, or null. The pointer is good until the dictionary changes; what it is changed
  // through, until the next copy of the dictionary. Among many names it is looked up in logarithmic time.
  [[nodiscard]] Value* Find(std::string_view key);
  [[nodiscard]] const Value* Find(std::string_view key) const;

  // Replaces the value under the name in its place, or appends it; returns the stored value.
  Value& Set(std::string_view key, Value value);
  // True when something was removed.
  bool Erase(std::string_view key);

  [[nodiscard]] const std::vector<Entry>& Entries() const;
  [[nodiscard]] bool Empty() const;

  // Whether the two are copies of which none has been changed since. What is equal need not be shared.
  [[nodiscard]] bool SharesEntriesWith(const Dictionary& other) const;

  // Equal entries in the same order.
  bool operator==(const Dictionary& other) const;

 private:
  struct Content;

  CopyOnWrite<Content> content_;
};

class Value {
 public:
  using Storage =
      std::variant<Dictionary, Array, std::string, std::int64_t, std::uint64_t, double, bool, Date, Data>;

  // Whole numbers are held as std::int64_t; std::uint64_t only for those above its range.
  Value() = default;
  Value(Dictionary value) : storage_(std::move(value)) {}
  Value(Array value) : storage_(std::move(value)) {}
  Value(std::string value) : storage_(std::move(value)) {}
  Value(const char* value) : storage_(std::string(value)) {}
  Value(std::int64_t value) : storage_(value) {}
  Value(std::uint64_t value);
  Value(std::uint32_t value) : storage_(std::int64_t{value}) {}
  Value(std::int32_t value) : storage_(std::int64_t{value}) {}
  Value(double value) : storage_(value) {}
  Value(bool value) : storage_(value) {}
  Value(Date value) : storage_(std::move(value)) {}
  Value(Data value) : storage_(std::move(value)) {}

  // The value as the kind asked for, or null when it is of another kind.
  template <class Kind>
  [[nodiscard]] Kind* As() {
    return std::get_if<Kind>(&storage_);
  }
  template <class Kind>
  [[nodiscard]] const Kind* As() const {
    return std::get_if<Kind>(&storage_);
  }

  // Any number or boolean as a whole number, truncated towards zero and wrapped to 64 bits; otherwise
  // nothing.
  [[nodiscard]] std::optional<std::uint64_t> AsNumber() const;

  [[nodiscard]] const Storage& Get() const { return storage_; }
  bool operator==(const Value& other) const = default;

 private:
  Storage storage_;
};

struct Entry {
  std::string key;
  Value value;
  bool operator==(const Entry&) const = default;
};

// Dictionaries that several holders share; none is null.
using SharedDictionaries = std::vector<std::shared_ptr<const Dictionary>>;

// Reads an XML property list. Nothing when the text is not one: malformed, of another document type, nested
// deeper than kMaximumDepth, or in an encoding other than UTF-8 and US-ASCII. A name that occurs twice in a
// dictionary keeps its last value.
[[nodiscard]] std::optional<Value> Read(std::string_view xml);

// Writes the value as a property list that Read and any other reader of the format accepts: text goes through
// WritableText, and containers deeper than the limit are left out with their names. Room for about as many
// bytes as expected is made at once.
[[nodiscard]] std::string Write(const Value& root, std::size_t expectedBytes = 0);

// The same text as Write(root), made from the text that Write gave for `before`: where all differences lie in
// one dictionary that was changed in a copy of `before`, only that one is written anew. All texts have to be
// WritableText.
[[nodiscard]] std::string WriteChange(const Dictionary& root, const Dictionary& before,
                                      std::string_view textBefore);

// Whether XML can hold the character: neither a control character other than white space, U+FFFE or U+FFFF,
// nor what is no character at all.
[[nodiscard]] constexpr bool IsWritable(wchar_t character) {
  if (character < 0x20) return character == '\t' || character == '\n' || character == '\r';
  if (character < 0xD800) return true;
  return character > 0xDFFF && character != 0xFFFE && character != 0xFFFF && character <= 0x10FFFF;
}

// The text without the characters that XML cannot hold, and without bytes that are not UTF-8.
[[nodiscard]] std::string WritableText(std::string_view text);

}  // namespace PropertyList
