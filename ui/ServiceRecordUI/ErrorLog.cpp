#include "ErrorLog.h"

#include "libs/PropertyList/PropertyList.h"
#include "libs/Terminal/TerminalText.h"
#include "libs/Trace/SystemLog.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace Dialogs::ErrorLog {
namespace {

constexpr std::size_t kLongestLine = 1000;

std::string TextOf(const PropertyList::Dictionary& details, std::string_view key) {
  const PropertyList::Value* value = details.Find(key);
  const std::string* text = value != nullptr ? value->As<std::string>() : nullptr;
  return text != nullptr ? *text : std::string();
}

}  // namespace

void Write(std::string_view reason, const std::string& details) {
  const std::optional<PropertyList::Value> root = PropertyList::Read(details);
  const auto* dictionary = root ? root->As<PropertyList::Dictionary>() : nullptr;
  if (dictionary == nullptr) return;
  const std::string text = TextOf(*dictionary, "ErrorTitle") + ": " + TextOf(*dictionary, "ErrorMessage");
  trace::SystemLog::Error(std::string(reason) + ": " +
                          Terminal::OneLine(Terminal::SingleBlanks(text), kLongestLine));
}

}  // namespace Dialogs::ErrorLog
