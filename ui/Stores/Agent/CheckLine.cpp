#include "Agent/StoreCheck.h"

#include <nlohmann/json.hpp>

#include <utility>
#include <vector>

namespace Stores {

namespace {

using Json = nlohmann::json;
using Wording::Message;

std::string TextOf(const Json& object, const char* member) {
  const auto found = object.find(member);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

const Json& MemberOf(const Json& object, const char* member) {
  static const Json kNone;
  const auto found = object.find(member);
  return found != object.end() ? *found : kNone;
}

Message MessageOf(const Json& value) {
  if (value.is_string()) return value.get<std::string>();
  std::string pattern = value.is_object() ? TextOf(value, "pattern") : std::string();
  if (pattern.empty()) return {};
  std::vector<Wording::Place> places;
  for (const auto& [name, place] : MemberOf(value, "places").items())
    places.push_back({name, MessageOf(place)});
  return {std::move(pattern), std::move(places)};
}

CheckFinding::Result ResultOf(const std::string& word) {
  if (word == "ok") return CheckFinding::Result::Ok;
  return word == "problem" ? CheckFinding::Result::Problem : CheckFinding::Result::Note;
}

}  // namespace

std::optional<CheckFinding> FindingFromLine(const std::string& line) {
  const Json object = Json::parse(line, nullptr, false);
  if (!object.is_object()) return std::nullopt;
  return CheckFinding{ResultOf(TextOf(object, "result")), TextOf(object, "check"),
                      MessageOf(MemberOf(object, "textMessage")), MessageOf(MemberOf(object, "nextMessage"))};
}

}  // namespace Stores
