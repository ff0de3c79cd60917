#include "dialog/Questions.h"

#include "libs/Terminal/TerminalText.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace Dialogs::Questions {
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;

// More would push the store's name off the screen.
constexpr std::size_t kMostGateways = 8;
// Texts begin in one column, behind the labels.
constexpr std::size_t kLabelWidth = 15;
constexpr std::string_view kNone = "(none)";

std::string TextOf(const Dictionary& dictionary, std::string_view key) {
  const PropertyList::Value* value = dictionary.Find(key);
  const std::string* text = value != nullptr ? value->As<std::string>() : nullptr;
  return text != nullptr ? *text : std::string();
}

std::string Shown(const Dictionary& dictionary, std::string_view key,
                  std::size_t maximumCharacters = Terminal::kLongestText) {
  const std::string text =
      Terminal::OneLine(Terminal::SingleBlanks(TextOf(dictionary, key)), maximumCharacters);
  return text.empty() ? std::string(kNone) : text;
}

// A certificate may name a host, so this is never cut.
std::string ShownWhole(const Dictionary& dictionary, std::string_view key) {
  return Shown(dictionary, key, Terminal::kNoLimit);
}

// The label stands on the first line only.
std::string Line(std::string_view label, std::string_view text, std::size_t columns) {
  const std::size_t textColumns = columns > kLabelWidth ? columns - kLabelWidth : 1;
  std::string start = "  ";
  start += label;
  std::string lines;
  for (const std::string& part : Terminal::Folded(text, textColumns)) {
    start.resize(kLabelWidth, ' ');
    lines += start + part + '\n';
    start.clear();
  }
  return lines;
}

std::string AddressLines(std::string_view label, std::string_view pathLabel, const std::string& address,
                         std::size_t columns) {
  const std::vector<std::string> parts = Terminal::AddressLines(address);
  std::string lines = Line(label, parts.front().empty() ? kNone : parts.front(), columns);
  if (parts.size() > 1) lines += Line(pathLabel, parts.back(), columns);
  return lines;
}

// The mark is a label, which no name can imitate.
std::string GatewayLines(const Dictionary& gateway, std::size_t columns) {
  const PropertyList::Value* mark = gateway.Find("IsDefault");
  const bool isDefault = mark != nullptr && mark->AsNumber().value_or(0) != 0;
  return Line(isDefault ? "  [default]" : "  [other]", Shown(gateway, "GatewayName"), columns) +
         AddressLines("    at", "    path", TextOf(gateway, "GatewayURL"), columns);
}

std::string AllGateways(const Dictionary& details, std::size_t columns) {
  const PropertyList::Value* value = details.Find("StoreGateways");
  const Array* gateways = value != nullptr ? value->As<Array>() : nullptr;
  if (gateways == nullptr || gateways->empty()) return Line("Gateways:", kNone, columns);
  std::string lines = "  Gateways:\n";
  const std::size_t shown = std::min(gateways->size(), kMostGateways);
  for (std::size_t index = 0; index < shown; ++index) {
    const Dictionary* gateway = (*gateways)[index].As<Dictionary>();
    lines += GatewayLines(gateway != nullptr ? *gateway : Dictionary(), columns);
  }
  if (gateways->size() == shown) return lines;
  return lines + "    and " + std::to_string(gateways->size() - shown) + " more\n";
}

}  // namespace

std::string AddStore(const Dictionary& details, std::size_t columns) {
  return "\nA service record wants to add a store:\n\n" +
         Line("Store:", Shown(details, "StoreName"), columns) +
         Line("Provider:", ShownWhole(details, "StoreProvider"), columns) +
         Line("Certificate:", ShownWhole(details, "CertificateName"), columns) +
         AddressLines("Address:", "Path:", TextOf(details, "StoreURL"), columns) +
         AllGateways(details, columns) + "\nAdd this store only if you trust the provider.\nAdd it? [y/N] ";
}

std::string ReplaceStore(const Dictionary& details, std::size_t columns) {
  return "\nA service record wants to replace a store that you already have:\n\n" +
         Line("Store:", Shown(details, "StoreName"), columns) + "\nReplace it with the new record? [y/N] ";
}

std::string ErrorMessage(const Dictionary& details, std::size_t columns) {
  return "\n" + Terminal::Indented(Shown(details, "ErrorTitle"), columns) + "\n\n" +
         Terminal::Indented(TextOf(details, "ErrorMessage"), columns) + "\n\n";
}

}  // namespace Dialogs::Questions
