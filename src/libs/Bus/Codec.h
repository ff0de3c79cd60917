#pragma once

#include "libs/Files/FileDescriptor.h"
#include "libs/PropertyList/PropertyList.h"

#include <cerrno>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

struct sd_bus_message;

namespace Bus {

// The path of an object ("o").
struct ObjectPath {
  std::string text;
};

// A value in a variant ("v") that holds exactly its type.
template <class Value>
struct Variant {
  Value value;
};

// How a type travels: its signature, and how it is appended to a message and read from one. Append and Read
// answer a negative error code on failure. Text is UTF-8 that the bus carries (Bus::Text).
//
// What stands for what: std::string s, bool b, std::int32_t i, std::uint32_t u, std::uint64_t t, std::vector
// an array. A property list's dictionary is a{sv} with text as s, booleans as b, whole numbers as t and
// arrays of dictionaries as aa{sv}. No other kinds are sent; what else comes in a variant is read as what is
// nearest to it (u and t as a number, o as text, any array as an array), or passed over.
template <class Type>
struct Codec;

// NOLINTBEGIN(bugprone-macro-parentheses): the argument is a type.
#define SR_BUS_CODEC(TYPE, SIGNATURE)                              \
  template <>                                                      \
  struct Codec<TYPE> {                                             \
    static std::string Signature() { return SIGNATURE; }           \
    [[nodiscard]] static int Append(sd_bus_message*, const TYPE&); \
    [[nodiscard]] static int Read(sd_bus_message*, TYPE&);         \
  }
SR_BUS_CODEC(std::string, "s");
SR_BUS_CODEC(ObjectPath, "o");
SR_BUS_CODEC(bool, "b");
SR_BUS_CODEC(std::int32_t, "i");
SR_BUS_CODEC(std::uint32_t, "u");
SR_BUS_CODEC(std::uint64_t, "t");
SR_BUS_CODEC(PropertyList::Dictionary, "a{sv}");
#undef SR_BUS_CODEC
// NOLINTEND(bugprone-macro-parentheses)

// The bodies of the templates below.
namespace Container {
[[nodiscard]] int Open(sd_bus_message* message, char type, const std::string& contents);
[[nodiscard]] int Close(sd_bus_message* message);
[[nodiscard]] int Enter(sd_bus_message* message, char type, const std::string& contents);
[[nodiscard]] int Exit(sd_bus_message* message);
[[nodiscard]] bool IsAtEnd(sd_bus_message* message);
}  // namespace Container

template <class Item>
struct Codec<std::vector<Item>> {
  static std::string Signature() { return "a" + Codec<Item>::Signature(); }
  [[nodiscard]] static int Append(sd_bus_message* message, const std::vector<Item>& items) {
    int result = Container::Open(message, 'a', Codec<Item>::Signature());
    for (auto item = items.begin(); result >= 0 && item != items.end(); ++item) {
      result = Codec<Item>::Append(message, *item);
    }
    return result < 0 ? result : Container::Close(message);
  }
  [[nodiscard]] static int Read(sd_bus_message* message, std::vector<Item>& items) {
    int result = Container::Enter(message, 'a', Codec<Item>::Signature());
    while (result >= 0 && !Container::IsAtEnd(message)) {
      result = Codec<Item>::Read(message, items.emplace_back());
    }
    return result < 0 ? result : Container::Exit(message);
  }
};

// What several share is only sent; none is null.
template <class Type>
struct Codec<std::shared_ptr<const Type>> {
  static std::string Signature() { return Codec<Type>::Signature(); }
  [[nodiscard]] static int Append(sd_bus_message* message, const std::shared_ptr<const Type>& shared) {
    return Codec<Type>::Append(message, *shared);
  }
};

// No value is sent as an empty one.
template <class Type>
struct Codec<std::optional<Type>> {
  static std::string Signature() { return Codec<Type>::Signature(); }
  [[nodiscard]] static int Append(sd_bus_message* message, const std::optional<Type>& value) {
    return value ? Codec<Type>::Append(message, *value) : Codec<Type>::Append(message, Type{});
  }
};

template <class Type>
struct Codec<Variant<Type>> {
  static std::string Signature() { return "v"; }
  [[nodiscard]] static int Append(sd_bus_message* message, const Variant<Type>& variant) {
    int result = Container::Open(message, 'v', Codec<Type>::Signature());
    if (result >= 0) result = Codec<Type>::Append(message, variant.value);
    return result < 0 ? result : Container::Close(message);
  }
  [[nodiscard]] static int Read(sd_bus_message* message, Variant<Type>& variant) {
    int result = Container::Enter(message, 'v', Codec<Type>::Signature());
    if (result >= 0) result = Codec<Type>::Read(message, variant.value);
    return result < 0 ? result : Container::Exit(message);
  }
};

// A variant whatever it holds. Only read.
template <>
struct Codec<PropertyList::Value> {
  static std::string Signature() { return "v"; }
  [[nodiscard]] static int Read(sd_bus_message* message, PropertyList::Value& value);
};

// The options ("a{sv}") of a call: descriptors ("h") and texts by their names ("a{ss}"). Read, one of another
// kind is neither; none such is sent.
using Texts = std::map<std::string, std::string>;
using Option = std::variant<std::monostate, Files::FileDescriptor, Texts>;
using Options = std::map<std::string, Option>;
template <>
struct Codec<Options> {
  static std::string Signature() { return "a{sv}"; }
  [[nodiscard]] static int Append(sd_bus_message* message, const Options& options);
  [[nodiscard]] static int Read(sd_bus_message* message, Options& options);
};

template <class... Types>
std::string SignatureOf() {
  return (std::string() + ... + Codec<Types>::Signature());
}

// One after the other, until one fails.
template <class... Types>
[[nodiscard]] int AppendAll([[maybe_unused]] sd_bus_message* message, const Types&... values) {
  int result = 0;
  static_cast<void>((((result = Codec<Types>::Append(message, values)) >= 0) && ...));
  return result;
}
template <class... Types>
[[nodiscard]] int ReadAll([[maybe_unused]] sd_bus_message* message, std::tuple<Types...>& values) {
  int result = 0;
  std::apply(
      [&](Types&... each) {
        static_cast<void>((((result = Codec<Types>::Read(message, each)) >= 0) && ...));
      },
      values);
  return result;
}

// The next value of the message, whatever its type; one of a kind that no property list has is passed over,
// and gives nothing. Answers a negative error code on failure.
[[nodiscard]] int ReadValue(sd_bus_message* message, std::optional<PropertyList::Value>& value);

}  // namespace Bus
