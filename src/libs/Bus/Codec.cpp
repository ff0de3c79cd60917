#include "libs/Bus/Codec.h"

#include "libs/Bus/SdBus.h"

#include <fcntl.h>

#include <string_view>

namespace Bus {
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;
using PropertyList::Value;

int ReadText(sd_bus_message* message, char type, std::string& text) {
  const char* read = nullptr;
  const int result = sd_bus_message_read_basic(message, type, &read);
  if (result >= 0) text = read;
  return result;
}

template <class Type>
int AppendVariant(sd_bus_message* message, const Type& value) {
  return Codec<Variant<Type>>::Append(message, {value});
}

int AppendDictionaries(sd_bus_message* message, const Array& dictionaries) {
  int result = Container::Open(message, 'v', "aa{sv}");
  if (result >= 0) result = Container::Open(message, 'a', "a{sv}");
  for (const Value& item : dictionaries) {
    const auto* dictionary = item.As<Dictionary>();
    if (result >= 0)
      result = dictionary == nullptr ? -EINVAL : Codec<Dictionary>::Append(message, *dictionary);
  }
  if (result >= 0) result = Container::Close(message);
  return result < 0 ? result : Container::Close(message);
}

int AppendValue(sd_bus_message* message, const Value& value) {
  if (const auto* text = value.As<std::string>()) return AppendVariant(message, *text);
  if (const auto* truth = value.As<bool>()) return AppendVariant(message, *truth);
  if (const auto* array = value.As<Array>()) return AppendDictionaries(message, *array);
  if (const auto number = value.AsNumber()) return AppendVariant(message, *number);
  return -EINVAL;
}

template <class Type>
int ReadAs(sd_bus_message* message, std::optional<Value>& value) {
  Type read{};
  const int result = Codec<Type>::Read(message, read);
  if (result >= 0) value = std::move(read);
  return result;
}

int ReadPath(sd_bus_message* message, std::optional<Value>& value) {
  ObjectPath path;
  const int result = Codec<ObjectPath>::Read(message, path);
  if (result >= 0) value = std::move(path.text);
  return result;
}

int ReadInVariant(sd_bus_message* message, const char* contents, std::optional<Value>& value) {
  int result = Container::Enter(message, 'v', contents);
  if (result >= 0) result = ReadValue(message, value);
  return result < 0 ? result : Container::Exit(message);
}

int ReadArray(sd_bus_message* message, const char* contents, std::optional<Value>& value) {
  if (std::string_view(contents) == "{sv}") return ReadAs<Dictionary>(message, value);
  Array items;
  int result = Container::Enter(message, 'a', contents);
  while (result >= 0 && !Container::IsAtEnd(message)) {
    std::optional<Value> item;
    result = ReadValue(message, item);
    if (item) items.push_back(std::move(*item));
  }
  value = std::move(items);
  return result < 0 ? result : Container::Exit(message);
}

int ReadEntry(sd_bus_message* message, std::vector<PropertyList::Entry>& entries) {
  std::string key;
  std::optional<Value> value;
  int result = Container::Enter(message, 'e', "sv");
  if (result >= 0) result = ReadText(message, 's', key);
  if (result >= 0) result = ReadValue(message, value);
  if (result >= 0 && value) entries.push_back({std::move(key), std::move(*value)});
  return result < 0 ? result : Container::Exit(message);
}

int AppendDescriptor(sd_bus_message* message, int descriptor) {
  int result = Container::Open(message, 'v', "h");
  if (result >= 0) result = sd_bus_message_append_basic(message, 'h', &descriptor);
  return result < 0 ? result : Container::Close(message);
}

int AppendTexts(sd_bus_message* message, const Texts& texts) {
  int result = Container::Open(message, 'v', "a{ss}");
  if (result >= 0) result = Container::Open(message, 'a', "{ss}");
  for (const auto& [name, text] : texts) {
    if (result >= 0) result = sd_bus_message_append(message, "{ss}", name.c_str(), text.c_str());
  }
  if (result >= 0) result = Container::Close(message);
  return result < 0 ? result : Container::Close(message);
}

int AppendOption(sd_bus_message* message, const std::string& name, const Option& option) {
  int result = Container::Open(message, 'e', "sv");
  if (result >= 0) result = sd_bus_message_append_basic(message, 's', name.c_str());
  if (result < 0) return result;
  if (const auto* descriptor = std::get_if<Files::FileDescriptor>(&option)) {
    result = AppendDescriptor(message, descriptor->Get());
  } else if (const auto* texts = std::get_if<Texts>(&option)) {
    result = AppendTexts(message, *texts);
  } else {
    result = -EINVAL;
  }
  return result < 0 ? result : Container::Close(message);
}

// The message closes its own ones.
int ReadDescriptor(sd_bus_message* message, Files::FileDescriptor& descriptor) {
  int borrowed = -1;
  int result = Container::Enter(message, 'v', "h");
  if (result >= 0) result = sd_bus_message_read_basic(message, 'h', &borrowed);
  if (result < 0) return result;
  descriptor = Files::FileDescriptor(::fcntl(borrowed, F_DUPFD_CLOEXEC, 0));
  return descriptor ? Container::Exit(message) : -errno;
}

int ReadTexts(sd_bus_message* message, Texts& texts) {
  int result = Container::Enter(message, 'v', "a{ss}");
  if (result >= 0) result = Container::Enter(message, 'a', "{ss}");
  while (result >= 0 && !Container::IsAtEnd(message)) {
    const char* name = nullptr;
    const char* text = nullptr;
    result = sd_bus_message_read(message, "{ss}", &name, &text);
    if (result >= 0) texts[name] = text;
  }
  if (result >= 0) result = Container::Exit(message);
  return result < 0 ? result : Container::Exit(message);
}

int ReadOption(sd_bus_message* message, Options& options) {
  std::string name;
  const char* contents = nullptr;
  int result = Container::Enter(message, 'e', "sv");
  if (result >= 0) result = ReadText(message, 's', name);
  if (result >= 0) result = sd_bus_message_peek_type(message, nullptr, &contents);
  if (result < 0) return result;
  Option& option = options[name];
  if (std::string_view(contents) == "h") {
    result = ReadDescriptor(message, option.emplace<Files::FileDescriptor>());
  } else if (std::string_view(contents) == "a{ss}") {
    result = ReadTexts(message, option.emplace<Texts>());
  } else {
    result = sd_bus_message_skip(message, "v");
  }
  return result < 0 ? result : Container::Exit(message);
}

}  // namespace

namespace Container {

int Open(sd_bus_message* message, char type, const std::string& contents) {
  return sd_bus_message_open_container(message, type, contents.c_str());
}

int Close(sd_bus_message* message) {
  return sd_bus_message_close_container(message);
}

int Enter(sd_bus_message* message, char type, const std::string& contents) {
  return sd_bus_message_enter_container(message, type, contents.c_str());
}

int Exit(sd_bus_message* message) {
  return sd_bus_message_exit_container(message);
}

bool IsAtEnd(sd_bus_message* message) {
  return sd_bus_message_at_end(message, 0) != 0;
}

}  // namespace Container

int Codec<std::string>::Append(sd_bus_message* message, const std::string& text) {
  return sd_bus_message_append_basic(message, 's', text.c_str());
}

int Codec<std::string>::Read(sd_bus_message* message, std::string& text) {
  return ReadText(message, 's', text);
}

int Codec<ObjectPath>::Append(sd_bus_message* message, const ObjectPath& path) {
  return sd_bus_message_append_basic(message, 'o', path.text.c_str());
}

int Codec<ObjectPath>::Read(sd_bus_message* message, ObjectPath& path) {
  return ReadText(message, 'o', path.text);
}

int Codec<Options>::Append(sd_bus_message* message, const Options& options) {
  int result = Container::Open(message, 'a', "{sv}");
  for (const auto& [name, option] : options) {
    if (result >= 0) result = AppendOption(message, name, option);
  }
  return result < 0 ? result : Container::Close(message);
}

int Codec<Options>::Read(sd_bus_message* message, Options& options) {
  int result = Container::Enter(message, 'a', "{sv}");
  while (result >= 0 && !Container::IsAtEnd(message)) result = ReadOption(message, options);
  return result < 0 ? result : Container::Exit(message);
}

int Codec<bool>::Append(sd_bus_message* message, const bool& truth) {
  const int flag = static_cast<int>(truth);
  return sd_bus_message_append_basic(message, 'b', &flag);
}

int Codec<bool>::Read(sd_bus_message* message, bool& truth) {
  int flag = 0;
  const int result = sd_bus_message_read_basic(message, 'b', &flag);
  truth = flag != 0;
  return result;
}

int Codec<std::int32_t>::Append(sd_bus_message* message, const std::int32_t& number) {
  return sd_bus_message_append_basic(message, 'i', &number);
}

int Codec<std::int32_t>::Read(sd_bus_message* message, std::int32_t& number) {
  return sd_bus_message_read_basic(message, 'i', &number);
}

int Codec<std::uint32_t>::Append(sd_bus_message* message, const std::uint32_t& number) {
  return sd_bus_message_append_basic(message, 'u', &number);
}

int Codec<std::uint32_t>::Read(sd_bus_message* message, std::uint32_t& number) {
  return sd_bus_message_read_basic(message, 'u', &number);
}

int Codec<std::uint64_t>::Append(sd_bus_message* message, const std::uint64_t& number) {
  return sd_bus_message_append_basic(message, 't', &number);
}

int Codec<std::uint64_t>::Read(sd_bus_message* message, std::uint64_t& number) {
  return sd_bus_message_read_basic(message, 't', &number);
}

int Codec<Dictionary>::Append(sd_bus_message* message, const Dictionary& dictionary) {
  int result = Container::Open(message, 'a', "{sv}");
  for (const auto& [key, value] : dictionary.Entries()) {
    if (result >= 0) result = Container::Open(message, 'e', "sv");
    if (result >= 0) result = Codec<std::string>::Append(message, key);
    if (result >= 0) result = AppendValue(message, value);
    if (result >= 0) result = Container::Close(message);
  }
  return result < 0 ? result : Container::Close(message);
}

int Codec<Dictionary>::Read(sd_bus_message* message, Dictionary& dictionary) {
  std::vector<PropertyList::Entry> entries;
  int result = Container::Enter(message, 'a', "{sv}");
  while (result >= 0 && !Container::IsAtEnd(message)) result = ReadEntry(message, entries);
  dictionary = Dictionary(std::move(entries));
  return result < 0 ? result : Container::Exit(message);
}

int Codec<Value>::Read(sd_bus_message* message, Value& value) {
  std::optional<Value> read;
  const int result = ReadValue(message, read);
  value = std::move(read).value_or(Value());
  return result;
}

int ReadValue(sd_bus_message* message, std::optional<Value>& value) {
  char type = 0;
  const char* contents = nullptr;
  const int result = sd_bus_message_peek_type(message, &type, &contents);
  if (result < 0) return result;
  switch (type) {
    case 's':
      return ReadAs<std::string>(message, value);
    case 'o':
      return ReadPath(message, value);
    case 'b':
      return ReadAs<bool>(message, value);
    case 'u':
      return ReadAs<std::uint32_t>(message, value);
    case 't':
      return ReadAs<std::uint64_t>(message, value);
    case 'v':
      return ReadInVariant(message, contents, value);
    case 'a':
      return ReadArray(message, contents, value);
    default:
      return sd_bus_message_skip(message, nullptr);
  }
}

}  // namespace Bus
