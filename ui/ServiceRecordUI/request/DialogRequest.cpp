#include "request/DialogRequest.h"

#include "libs/DialogWire/DialogWire.h"
#include "libs/Files/WholeContent.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace Dialogs {
namespace {

constexpr std::size_t kLongestHeader = 128;
constexpr std::uint64_t kLargestDetails = 32 * 1024 * 1024;
constexpr std::array kDialogs{DialogWire::kAddStore, DialogWire::kReplaceStore, DialogWire::kErrorMessage,
                              DialogWire::kLogOn};

// Byte by byte, so that nothing behind the line is taken.
std::optional<std::string> ReadHeader(int input) {
  std::string header;
  char next = '\0';
  while (header.size() < kLongestHeader && Files::ReadInto(input, {&next, 1}).bytes == 1) {
    if (next == '\n') return header;
    header += next;
  }
  return std::nullopt;
}

std::string_view TakeWord(std::string_view& line) {
  const std::size_t end = line.find(' ');
  const std::string_view word = line.substr(0, end);
  line.remove_prefix(end == std::string_view::npos ? line.size() : end + 1);
  return word;
}

std::optional<std::uint64_t> NumberOf(std::string_view word) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (error != std::errc() || end != word.data() + word.size()) return std::nullopt;
  return number;
}

bool IsKnown(std::string_view dialog) {
  for (const std::string_view known : kDialogs) {
    if (known == dialog) return true;
  }
  return false;
}

std::optional<PropertyList::Dictionary> ReadDetails(int input, std::size_t size) {
  std::string text(size, '\0');
  if (Files::ReadInto(input, text).bytes != size) return std::nullopt;
  std::optional<PropertyList::Value> root = PropertyList::Read(text);
  PropertyList::Dictionary* details = root ? root->As<PropertyList::Dictionary>() : nullptr;
  if (details == nullptr) return std::nullopt;
  return std::move(*details);
}

}  // namespace

std::optional<DialogRequest> ReadRequest(int input) {
  const std::optional<std::string> header = ReadHeader(input);
  if (!header) return std::nullopt;
  std::string_view rest = *header;
  const std::string_view word = TakeWord(rest);
  const std::optional<std::uint64_t> version = NumberOf(TakeWord(rest));
  const std::string_view dialog = TakeWord(rest);
  const std::optional<std::uint64_t> size = NumberOf(rest);
  if (word != DialogWire::kHeaderWord || version != DialogWire::kVersion || !IsKnown(dialog) || !size ||
      *size > kLargestDetails) {
    return std::nullopt;
  }
  std::optional<PropertyList::Dictionary> details = ReadDetails(input, static_cast<std::size_t>(*size));
  if (!details) return std::nullopt;
  return DialogRequest{std::string(dialog), std::move(*details)};
}

}  // namespace Dialogs
