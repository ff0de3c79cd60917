#include "libs/Wording/Message.h"

#include "libs/Wording/Pattern.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace Wording {

Message::Message(std::string foreign) : text_(std::move(foreign)) {}

Message::Message(const char* foreign) : text_(foreign) {}

Message::Message(std::string pattern, std::vector<Place> places)
    : isOurs_(true), text_(std::move(pattern)), places_(std::move(places)) {}

std::string Message::English() const {
  return Filled(text_, [this](std::string_view name) -> std::optional<std::string> {
    const auto place = std::ranges::find(places_, name, &Place::name);
    if (place == places_.end()) return std::nullopt;
    return place->message.English();
  });
}

Message Message::WithForeign(const Change& change) const {
  if (!isOurs_) return change(text_);
  Message changed = *this;
  for (Place& place : changed.places_) place.message = place.message.WithForeign(change);
  return changed;
}

// clang 14 cannot make this comparison by itself, because a place holds a message.
bool Message::operator==(const Message& other) const {
  return isOurs_ == other.isOurs_ && text_ == other.text_ && places_ == other.places_;
}

}  // namespace Wording
