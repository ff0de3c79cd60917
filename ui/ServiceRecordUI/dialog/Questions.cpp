#include "dialog/Questions.h"

#include "libs/Terminal/TerminalText.h"
#include "request/Details.h"
#include "view/StoreChanges.h"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string_view>
#include <vector>

namespace Dialogs::Questions {
namespace {

using PropertyList::Dictionary;

// More would push the store's name off the screen.
constexpr std::size_t kMostGateways = 8;
constexpr std::size_t kMostChanges = 12;
// Texts begin in one column, behind the labels.
constexpr std::size_t kLabelWidth = 15;
constexpr std::string_view kNone = "(none)";

std::string Fit(std::string_view text, std::size_t maximumCharacters = Terminal::kLongestText) {
  const std::string fit = Terminal::OneLine(Terminal::SingleBlanks(text), maximumCharacters);
  return fit.empty() ? std::string(kNone) : fit;
}

std::string Shown(const Dictionary& dictionary, std::string_view key,
                  std::size_t maximumCharacters = Terminal::kLongestText) {
  return Fit(Details::Text(dictionary, key), maximumCharacters);
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

std::string LineIfThere(std::string_view label, const Dictionary& details, std::string_view key,
                        std::size_t columns) {
  const std::string text = Details::Text(details, key);
  return text.empty() ? std::string() : Line(label, Fit(text, Terminal::kNoLimit), columns);
}

// The form of a host in which no letter looks like another one, where it is another form.
std::string ASCIILine(const Dictionary& details, std::string_view key, std::size_t columns) {
  return LineIfThere("In ASCII:", details, key, columns);
}

std::string WhichServer(const Dictionary& details) {
  const std::string server = Details::Text(details, "VerifiedServer");
  if (server == "gateway") return "(the default gateway)";
  return server == "store" ? "(the store's own server)" : "";
}

// An older agent does not say which server was verified.
std::string VerifiedLines(const Dictionary& details, std::size_t columns) {
  if (details.Find("VerifiedHost") == nullptr) return {};
  const std::string which = WhichServer(details);
  return Line("Verified:", ShownWhole(details, "VerifiedHost"), columns) +
         (which.empty() ? std::string() : Line("", which, columns)) +
         ASCIILine(details, "VerifiedHostASCII", columns);
}

// The mark is a label, which no name can imitate.
std::string GatewayLines(const Details::Gateway& gateway, std::size_t columns) {
  return Line(gateway.isDefault ? "  [default]" : "  [other]", Fit(gateway.name), columns) +
         (gateway.url.empty() ? Line("    at", "(no address)", columns)
                              : AddressLines("    at", "    path", gateway.url, columns));
}

std::string AllGateways(const Dictionary& details, std::size_t columns) {
  const std::vector<Details::Gateway> gateways = Details::Gateways(details);
  if (gateways.empty()) return Line("Gateways:", kNone, columns);
  std::string lines = "  Gateways:\n";
  const std::size_t shown = std::min(gateways.size(), kMostGateways);
  for (std::size_t index = 0; index < shown; ++index) lines += GatewayLines(gateways[index], columns);
  if (gateways.size() == shown) return lines;
  return lines + "    and " + std::to_string(gateways.size() - shown) + " more\n";
}

// The marks around what is filled into a sentence are for windows.
std::string WithoutIsolation(std::string text) {
  for (const std::string_view mark : {"\u2068", "\u2069"}) {
    for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos;) text.erase(at, mark.size());
  }
  return text;
}

// A value stands below its caption and to its right, so that no line of it passes for a caption.
std::string FactLines(const Fact& fact, std::size_t columns) {
  std::string lines = "  " + fact.caption + ":\n";
  std::istringstream values(WithoutIsolation(fact.value));
  for (std::string value; std::getline(values, value);) {
    lines += Line("", Fit(value, Terminal::kNoLimit), columns);
  }
  return lines;
}

std::string ChangeLines(const StoreChanges& changes, std::size_t columns) {
  if (!changes.isKnown) return {};
  std::string lines = "\nNow:\n\n";
  for (const Fact& fact : changes.held) lines += FactLines(fact, columns);
  if (changes.changes.empty()) return lines + "\nName, address, gateways and beacons stay the same.\n";
  lines += "\nThe new record changes:\n\n";
  for (const Fact& fact : changes.changes) lines += FactLines(fact, columns);
  return lines;
}

}  // namespace

std::string AddStore(const Dictionary& details, std::size_t columns) {
  return "\nA service record wants to add a store:\n\n" +
         Line("Store:", Shown(details, "StoreName"), columns) + VerifiedLines(details, columns) +
         Line("Operated by:", ShownWhole(details, "StoreProvider"), columns) +
         Line("Issued by:", ShownWhole(details, "CertificateName"), columns) +
         AddressLines("Address:", "Path:", Details::Text(details, "StoreURL"), columns) +
         ASCIILine(details, "StoreHostASCII", columns) + AllGateways(details, columns) +
         "\nAdd this store only if you trust whoever operates it.\nAdd it? [y/N] ";
}

std::string ReplaceStore(const Dictionary& details, std::size_t columns) {
  return "\nA service record wants to replace a store that you already have:\n\n" +
         Line("Store:", Shown(details, "StoreName"), columns) +
         ChangeLines(StoreChanges::Of(details, kMostChanges), columns) +
         "\nReplace it with the new record? [y/N] ";
}

std::string ErrorMessage(const Dictionary& details, std::size_t columns) {
  std::string text = "\n" + Terminal::Indented(Shown(details, "ErrorTitle"), columns) + "\n\n" +
                     Terminal::Indented(Details::Text(details, "ErrorMessage"), columns) + "\n";
  const std::string reason = Details::Text(details, "ErrorReason");
  if (!reason.empty()) text += Terminal::Indented(reason, columns) + "\n";
  const std::string store = Details::Text(details, "StoreName");
  const std::string concerned = (store.empty() ? std::string() : Line("Store:", Fit(store), columns)) +
                                LineIfThere("Server:", details, "Server", columns) +
                                LineIfThere("File:", details, "DocumentPath", columns);
  return concerned.empty() ? text + "\n" : text + "\n" + concerned + "\n";
}

}  // namespace Dialogs::Questions
