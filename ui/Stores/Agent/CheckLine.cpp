#include "Agent/StoreCheck.h"

#include <nlohmann/json.hpp>

namespace Stores {

namespace {

using Json = nlohmann::json;

std::string TextOf(const Json& object, const char* member) {
  const auto found = object.find(member);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

CheckFinding::Result ResultOf(const std::string& word) {
  if (word == "ok") return CheckFinding::Result::Ok;
  return word == "problem" ? CheckFinding::Result::Problem : CheckFinding::Result::Note;
}

}  // namespace

std::optional<CheckFinding> FindingFromLine(const std::string& line) {
  const Json object = Json::parse(line, nullptr, false);
  if (!object.is_object()) return std::nullopt;
  return CheckFinding{ResultOf(TextOf(object, "result")), TextOf(object, "check"), TextOf(object, "text"),
                      TextOf(object, "next")};
}

}  // namespace Stores
