#pragma once

#include <functional>
#include <string>
#include <vector>

// Texts for people, worded by one program and shown by another, which may do so in another language. UTF-8;
// any thread.
namespace Wording {

struct Place;

// A text of ours: a pattern in English, with places "{name}" for what is filled in. Or a foreign one, which
// is the same in every language: what somebody else wrote, or a number.
class Message {
 public:
  Message() = default;  // the empty foreign text
  Message(std::string foreign);
  Message(const char* foreign);
  Message(std::string pattern, std::vector<Place> places);

  [[nodiscard]] bool IsOurs() const { return isOurs_; }
  [[nodiscard]] bool IsEmpty() const { return text_.empty(); }
  // The pattern of a text of ours, or the foreign text.
  [[nodiscard]] const std::string& Text() const { return text_; }
  [[nodiscard]] const std::vector<Place>& Places() const { return places_; }

  // In English, with the places filled in. One that is not named stays.
  [[nodiscard]] std::string English() const;

  // The same with each foreign text in it changed.
  using Change = std::function<std::string(const std::string& foreign)>;
  [[nodiscard]] Message WithForeign(const Change& change) const;

  bool operator==(const Message&) const;

 private:
  bool isOurs_ = false;
  std::string text_;
  std::vector<Place> places_;
};

struct Place {
  std::string name;
  Message message;
  bool operator==(const Place&) const = default;
};

// A text of ours. The literal is found by xgettext.
[[nodiscard]] inline Message Worded(const char* pattern, std::vector<Place> places = {}) {
  return {std::string(pattern), std::move(places)};
}

}  // namespace Wording
