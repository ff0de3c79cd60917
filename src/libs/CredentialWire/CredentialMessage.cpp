#include "libs/CredentialWire/CredentialMessage.h"

#include <algorithm>
#include <utility>

namespace CredentialWire {
namespace {

constexpr std::string_view kNeverInAValue("\n\0", 2);

}  // namespace

bool CredentialMessage::Set(std::string_view key, std::string_view value) {
  if (value.find_first_of(kNeverInAValue) != std::string_view::npos) return false;
  std::erase_if(entries_, [key](const Entry& entry) { return entry.key == key; });
  entries_.push_back({std::string(key), Secret(value)});
  return true;
}

std::string_view CredentialMessage::Get(std::string_view key) const {
  const Entry* const entry = Find(key);
  return entry != nullptr ? entry->value.View() : std::string_view();
}

Secret CredentialMessage::Text() const {
  Secret text;
  for (const Entry& entry : entries_) {
    text.Append(entry.key);
    text.Append("=");
    text.Append(entry.value.View());
    text.Append("\n");
  }
  text.Append("\n");
  return text;
}

std::optional<std::size_t> CredentialMessage::LengthOf(std::string_view text) {
  if (text.starts_with('\n')) return 1;
  const std::size_t end = text.find("\n\n");
  if (end == std::string_view::npos) return std::nullopt;
  return end + 2;
}

std::optional<CredentialMessage> CredentialMessage::Parse(std::string_view text) {
  const std::optional<std::size_t> length = LengthOf(text);
  if (!length || *length > kMaximumBytes) return std::nullopt;
  text = text.substr(0, *length - 1);
  CredentialMessage message;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(line.size() + 1);
    const std::size_t separator = line.find('=');
    if (separator == 0 || separator == std::string_view::npos) return std::nullopt;
    if (!message.Set(line.substr(0, separator), line.substr(separator + 1))) return std::nullopt;
  }
  return message;
}

const CredentialMessage::Entry* CredentialMessage::Find(std::string_view key) const {
  const auto found =
      std::find_if(entries_.begin(), entries_.end(), [key](const Entry& entry) { return entry.key == key; });
  return found != entries_.end() ? &*found : nullptr;
}

}  // namespace CredentialWire
