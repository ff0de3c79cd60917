#include "ErrorLog.h"

#include "libs/PropertyList/PropertyList.h"
#include "libs/Terminal/TerminalText.h"
#include "libs/Trace/SystemLog.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace Dialogs::ErrorLog {
namespace {

constexpr std::size_t kLongestText = 1000;  // in characters

std::string TextOf(const PropertyList::Dictionary& details, std::string_view key) {
  const PropertyList::Value* value = details.Find(key);
  const std::string* text = value != nullptr ? value->As<std::string>() : nullptr;
  return text != nullptr ? *text : std::string();
}

std::string Shown(const std::string& text) {
  return Terminal::OneLine(Terminal::SingleBlanks(text), kLongestText);
}

// What the message is about: ` (store "Sales", file "/home/mia/a.cr")`; empty where nothing of it is known.
std::string Concerned(const PropertyList::Dictionary& details) {
  constexpr std::array<std::pair<const char*, const char*>, 3> kKeys{
      {{"StoreName", "store"}, {"Server", "server"}, {"DocumentPath", "file"}}};
  std::string concerned;
  for (const auto& [key, label] : kKeys) {
    const std::string text = Shown(TextOf(details, key));
    if (text.empty()) continue;
    concerned.append(concerned.empty() ? " (" : ", ").append(label).append(" \"").append(text).append("\"");
  }
  return concerned.empty() ? concerned : concerned + ")";
}

}  // namespace

void Write(std::string_view reason, const std::string& details) {
  const std::optional<PropertyList::Value> root = PropertyList::Read(details);
  const auto* dictionary = root ? root->As<PropertyList::Dictionary>() : nullptr;
  if (dictionary == nullptr) return;
  std::string text = TextOf(*dictionary, "ErrorTitle") + ": " + TextOf(*dictionary, "ErrorMessage") + " " +
                     TextOf(*dictionary, "ErrorReason");
  std::ranges::replace(text, '\n', ' ');
  trace::SystemLog::Error(std::string(reason) + ": " + Shown(text) + Concerned(*dictionary));
}

}  // namespace Dialogs::ErrorLog
