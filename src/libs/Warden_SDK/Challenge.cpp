#include "libs/Warden_SDK/Challenge.h"

#include "libs/Text/TextHelpers.h"

#include <algorithm>

namespace Warden {
namespace {

constexpr std::size_t kMostParameters = 64;
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kTokenSigns = "!#$%&'*+-.^_`|~";
constexpr std::string_view kToken68Signs = "-._~+/";

bool IsLetterOrDigit(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9');
}

bool IsTokenCharacter(char character) {
  return IsLetterOrDigit(character) || kTokenSigns.find(character) != std::string_view::npos;
}

bool IsToken68Character(char character) {
  return IsLetterOrDigit(character) || kToken68Signs.find(character) != std::string_view::npos;
}

class ChallengeReader {
 public:
  explicit ChallengeReader(std::string_view text) : rest_(text) {}

  // Past the blanks and commas before the next challenge. False at the end.
  [[nodiscard]] bool HasNext() {
    Skip(" \t,");
    return !rest_.empty();
  }

  // Nothing when the challenge is malformed.
  [[nodiscard]] std::optional<Challenge> Next() {
    Challenge challenge;
    challenge.scheme = util::AsciiLowerCased(Take(IsTokenCharacter));
    if (challenge.scheme.empty()) return std::nullopt;
    if (AtEndOfItem()) return challenge;
    if (!StartsWithBlank()) return std::nullopt;
    Skip(kBlanks);
    if (TakeToken68(challenge.token)) return challenge;
    while (StartsParameter()) {
      if (!TakeParameter(challenge)) return std::nullopt;
      if (!AtEndOfItem()) return std::nullopt;
      Skip(" \t,");
    }
    if (challenge.parameters.empty()) return std::nullopt;
    return challenge;
  }

 private:
  void Skip(std::string_view characters) {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(characters), rest_.size()));
  }

  [[nodiscard]] bool StartsWithBlank() const {
    return !rest_.empty() && kBlanks.find(rest_.front()) != std::string_view::npos;
  }

  template <typename Predicate>
  std::string_view Take(Predicate belongs) {
    const auto end = std::find_if_not(rest_.begin(), rest_.end(), belongs);
    const std::string_view taken = rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()));
    rest_.remove_prefix(taken.size());
    return taken;
  }

  // Whether the item ends here, at a comma or the end of the text.
  [[nodiscard]] bool AtEndOfItem() const {
    const std::size_t next = rest_.find_first_not_of(kBlanks);
    return next == std::string_view::npos || rest_[next] == ',';
  }

  bool TakeToken68(std::string& token) {
    const std::string_view before = rest_;
    std::string text(Take(IsToken68Character));
    if (!text.empty()) text += Take([](char character) { return character == '='; });
    if (!text.empty() && AtEndOfItem()) {
      token = std::move(text);
      return true;
    }
    rest_ = before;
    return false;
  }

  // A name and an equals sign; anything else begins the next challenge.
  [[nodiscard]] bool StartsParameter() const {
    ChallengeReader ahead(*this);
    if (ahead.Take(IsTokenCharacter).empty()) return false;
    ahead.Skip(kBlanks);
    return ahead.rest_.starts_with('=');
  }

  bool TakeParameter(Challenge& challenge) {
    std::string name = util::AsciiLowerCased(Take(IsTokenCharacter));
    Skip(kBlanks);
    rest_.remove_prefix(1);
    Skip(kBlanks);
    std::optional<std::string> value = TakeValue();
    if (!value || challenge.Parameter(name) != nullptr || challenge.parameters.size() >= kMostParameters) {
      return false;
    }
    challenge.parameters.emplace_back(std::move(name), std::move(*value));
    return true;
  }

  std::optional<std::string> TakeValue() {
    if (rest_.starts_with('"')) return TakeQuoted();
    std::string token(Take(IsTokenCharacter));
    if (token.empty()) return std::nullopt;
    return token;
  }

  std::optional<std::string> TakeQuoted() {
    std::string value;
    for (std::size_t index = 1; index < rest_.size(); ++index) {
      if (rest_[index] == '"') {
        rest_.remove_prefix(index + 1);
        return value;
      }
      if (rest_[index] == '\\' && ++index == rest_.size()) break;
      value += rest_[index];
    }
    return std::nullopt;
  }

  std::string_view rest_;
};

}  // namespace

const std::string* Challenge::Parameter(std::string_view name) const {
  for (const auto& [known, value] : parameters) {
    if (known == name) return &value;
  }
  return nullptr;
}

void AppendChallenges(std::string_view value, std::vector<Challenge>& challenges) {
  ChallengeReader reader(value);
  while (reader.HasNext()) {
    std::optional<Challenge> challenge = reader.Next();
    if (!challenge) return;
    challenges.push_back(std::move(*challenge));
  }
}

}  // namespace Warden
