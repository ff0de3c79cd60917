#include "Questions.h"

#include "TerminalText.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace Questions {
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;

constexpr std::size_t kLongestText = 200;
constexpr std::size_t kLongestMessage = 4000;
// More would push the store's name off the screen.
constexpr std::size_t kMostGateways = 16;
// Texts begin in one column, behind the labels.
constexpr std::size_t kLabelWidth = 15;
constexpr std::string_view kNextLine = "\n               ";

std::string TextOf(const Dictionary& dictionary, std::string_view key) {
  const PropertyList::Value* value = dictionary.Find(key);
  const std::string* text = value != nullptr ? value->As<std::string>() : nullptr;
  return text != nullptr ? *text : std::string();
}

std::string Shown(const Dictionary& dictionary, std::string_view key) {
  const std::string text = TerminalText::OneLine(TextOf(dictionary, key), kLongestText);
  return text.empty() ? "(none)" : text;
}

std::string GatewayLine(const PropertyList::Value& value) {
  const Dictionary* gateway = value.As<Dictionary>();
  if (gateway == nullptr) return "(none)";
  const PropertyList::Value* mark = gateway->Find("IsDefault");
  const bool isDefault = mark != nullptr && mark->AsNumber().value_or(0) != 0;
  return Shown(*gateway, "GatewayName") + ", " + Shown(*gateway, "GatewayURL") +
         (isDefault ? " [default]" : "");
}

std::string GatewayLines(const Dictionary& details) {
  const PropertyList::Value* value = details.Find("StoreGateways");
  const Array* gateways = value != nullptr ? value->As<Array>() : nullptr;
  if (gateways == nullptr || gateways->empty()) return "(none)";
  const std::size_t shown = std::min(gateways->size(), kMostGateways);
  std::string lines;
  for (std::size_t index = 0; index < shown; ++index) {
    if (index > 0) lines += kNextLine;
    lines += GatewayLine((*gateways)[index]);
  }
  if (gateways->size() == shown) return lines;
  lines += kNextLine;
  return lines + "and " + std::to_string(gateways->size() - shown) + " more";
}

std::string Line(std::string_view label, const std::string& text) {
  std::string line = "  ";
  line += label;
  line.resize(kLabelWidth, ' ');
  return line + text + "\n";
}

}  // namespace

std::string AddStore(const Dictionary& details) {
  return "\nA service record wants to add a store:\n\n" + Line("Store:", Shown(details, "StoreName")) +
         Line("Provider:", Shown(details, "StoreProvider")) +
         Line("Certificate:", Shown(details, "CertificateName")) +
         Line("Address:", Shown(details, "StoreURL")) + Line("Gateways:", GatewayLines(details)) +
         "\nAdd this store only if you trust the provider.\nAdd it? [y/N] ";
}

std::string ReplaceStore(const Dictionary& details) {
  return "\nA service record wants to replace a store that you already have:\n\n" +
         Line("Store:", Shown(details, "StoreName")) + "\nReplace it with the new record? [y/N] ";
}

std::string ErrorMessage(const Dictionary& details) {
  return "\n" + Shown(details, "ErrorTitle") + "\n\n" +
         TerminalText::Indented(TextOf(details, "ErrorMessage"), kLongestMessage) + "\n\n";
}

}  // namespace Questions
