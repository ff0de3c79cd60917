#include "request/Details.h"

namespace Dialogs {

namespace Details {

using PropertyList::Array;
using PropertyList::Dictionary;
using PropertyList::Value;

namespace {

const Array& ItemsOf(const Dictionary& details, std::string_view key) {
  static const Array none;
  const Value* value = details.Find(key);
  const Array* items = value != nullptr ? value->As<Array>() : nullptr;
  return items != nullptr ? *items : none;
}

std::string TextOf(const Value* value) {
  const std::string* text = value != nullptr ? value->As<std::string>() : nullptr;
  return text != nullptr ? *text : std::string();
}

std::optional<std::uint64_t> NumberOf(const Dictionary& details, std::string_view key) {
  const Value* value = details.Find(key);
  return value != nullptr ? value->AsNumber() : std::nullopt;
}

Gateway GatewayOf(const Value& item) {
  const Dictionary* gateway = item.As<Dictionary>();
  if (gateway == nullptr) return {};
  return {.name = Text(*gateway, "GatewayName"),
          .url = Text(*gateway, "GatewayURL"),
          .isDefault = Mark(*gateway, "IsDefault"),
          .authentication = NumberOf(*gateway, "GatewayAuthType"),
          .edition = NumberOf(*gateway, "GatewayEdition"),
          .rewriteMode = NumberOf(*gateway, "GatewayRewriteMode")};
}

}  // namespace

std::string Text(const Dictionary& details, std::string_view key) {
  return TextOf(details.Find(key));
}

bool Mark(const Dictionary& details, std::string_view key) {
  return NumberOf(details, key).value_or(0) != 0;
}

std::vector<std::string> Texts(const Dictionary& details, std::string_view key) {
  std::vector<std::string> texts;
  for (const Value& item : ItemsOf(details, key)) texts.push_back(TextOf(&item));
  return texts;
}

std::vector<Gateway> Gateways(const Dictionary& details) {
  std::vector<Gateway> gateways;
  const std::string withoutURL = Text(details, "DefaultGatewayWithoutURL");
  if (!withoutURL.empty()) gateways.push_back({.name = withoutURL, .url = {}, .isDefault = true});
  for (const Value& item : ItemsOf(details, "StoreGateways")) gateways.push_back(GatewayOf(item));
  return gateways;
}

}  // namespace Details

}  // namespace Dialogs
