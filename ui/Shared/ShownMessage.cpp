#include "Shared/ShownMessage.h"

#include "Shared/ShownText.h"
#include "Shared/Translations.h"
#include "libs/Wording/Pattern.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace Windows {

using Wording::Message;

namespace {

std::string Within(const Message& message) {
  const std::string shown = ShownMessage(message);
  return message.IsOurs() ? shown : ShownText::Isolated(shown);
}

}  // namespace

std::string ShownMessage(const Message& message) {
  if (!message.IsOurs()) return ShownText::Whole(message.Text());
  return Wording::Filled(
      Translated(message.Text().c_str()), [&message](std::string_view name) -> std::optional<std::string> {
        const auto place = std::ranges::find(message.Places(), name, &Wording::Place::name);
        if (place == message.Places().end()) return std::nullopt;
        return Within(place->message);
      });
}

}  // namespace Windows
