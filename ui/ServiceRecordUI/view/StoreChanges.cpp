#include "view/StoreChanges.h"

#include "Shared/ShownText.h"
#include "Shared/Translations.h"
#include "request/Details.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace Dialogs {

namespace {

using PropertyList::Dictionary;

struct Captions {
  const char* added;
  const char* removed;
};

const Dictionary* StoreIn(const Dictionary& details, std::string_view key) {
  const PropertyList::Value* value = details.Find(key);
  return value != nullptr ? value->As<Dictionary>() : nullptr;
}

void AddLine(std::string& lines, const std::string& line) {
  if (line.empty() || lines.find(line) != std::string::npos) return;
  if (!lines.empty()) lines += '\n';
  lines += line;
}

// The address, and the forms of its host that it does not show itself.
std::string AddressOf(const Dictionary& store) {
  std::string lines = ShownText::Whole(Details::Text(store, "StoreURL"));
  AddLine(lines, ShownText::Whole(Details::Text(store, "StoreHost")));
  AddLine(lines, ShownText::Whole(Details::Text(store, "StoreHostASCII")));
  return lines;
}

std::string OrNone(std::string text) {
  return text.empty() ? Translated("None") : std::move(text);
}

std::string HeldAndNew(const std::string& held, const std::string& replacement) {
  return ShownText::Sentence(Translated("Held: {held}"), {{"held", OrNone(held)}}) + "\n" +
         ShownText::Sentence(Translated("New: {new}"), {{"new", OrNone(replacement)}});
}

void AddIfDifferent(std::vector<Fact>& changes, const char* caption, const std::string& held,
                    const std::string& replacement) {
  if (held != replacement) changes.push_back({caption, HeldAndNew(held, replacement)});
}

const Details::Gateway* Named(const std::vector<Details::Gateway>& gateways, const std::string& name) {
  const auto found = std::ranges::find(gateways, name, &Details::Gateway::name);
  return found != gateways.end() ? &*found : nullptr;
}

std::string DefaultOf(const std::vector<Details::Gateway>& gateways) {
  const auto found = std::ranges::find_if(gateways, &Details::Gateway::isDefault);
  return found != gateways.end() ? ShownText::Name(found->name) : std::string();
}

void AddNewAndChanged(std::vector<Fact>& changes, const std::vector<Details::Gateway>& held,
                      const std::vector<Details::Gateway>& replacement) {
  for (const Details::Gateway& gateway : replacement) {
    const Details::Gateway* const before = Named(held, gateway.name);
    if (before == nullptr) {
      changes.push_back({Translated("Gateway added"), ShownGateway(gateway.name, gateway.url)});
    } else if (before->url != gateway.url) {
      changes.push_back({Translated("Gateway with another address"),
                         ShownText::Name(gateway.name) + "\n" +
                             HeldAndNew(ShownText::Whole(before->url), ShownText::Whole(gateway.url))});
    }
  }
}

void AddGatewayChanges(std::vector<Fact>& changes, const Dictionary& held, const Dictionary& replacement) {
  const std::vector<Details::Gateway> before = Details::Gateways(held);
  const std::vector<Details::Gateway> after = Details::Gateways(replacement);
  AddIfDifferent(changes, Translated("Default gateway"), DefaultOf(before), DefaultOf(after));
  AddNewAndChanged(changes, before, after);
  for (const Details::Gateway& gateway : before) {
    if (Named(after, gateway.name) == nullptr) {
      changes.push_back({Translated("Gateway removed"), ShownGateway(gateway.name, gateway.url)});
    }
  }
}

// What is in the second list only.
void AddMissing(std::vector<Fact>& changes, const char* caption, const std::vector<std::string>& from,
                const std::vector<std::string>& items) {
  for (const std::string& item : items) {
    if (std::ranges::find(from, item) == from.end()) changes.push_back({caption, ShownText::Whole(item)});
  }
}

void AddBeaconChanges(std::vector<Fact>& changes, const Captions& captions, std::string_view key,
                      const Dictionary& held, const Dictionary& replacement) {
  const std::vector<std::string> before = Details::Texts(held, key);
  const std::vector<std::string> after = Details::Texts(replacement, key);
  AddMissing(changes, captions.added, before, after);
  AddMissing(changes, captions.removed, after, before);
}

std::vector<Fact> ChangesOf(const Dictionary& held, const Dictionary& replacement) {
  std::vector<Fact> changes;
  AddIfDifferent(changes, Translated("Name"), ShownText::Name(Details::Text(held, "StoreName")),
                 ShownText::Name(Details::Text(replacement, "StoreName")));
  AddIfDifferent(changes, Translated("Address"), AddressOf(held), AddressOf(replacement));
  AddGatewayChanges(changes, held, replacement);
  AddBeaconChanges(changes, {Translated("Internal beacon added"), Translated("Internal beacon removed")},
                   "InternalBeacons", held, replacement);
  AddBeaconChanges(changes, {Translated("External beacon added"), Translated("External beacon removed")},
                   "ExternalBeacons", held, replacement);
  return changes;
}

}  // namespace

StoreChanges StoreChanges::Of(const Dictionary& details) {
  StoreChanges result;
  const Dictionary* const held = StoreIn(details, "HeldStore");
  const Dictionary* const replacement = StoreIn(details, "NewStore");
  result.name = ShownText::Name(Details::Text(held != nullptr ? *held : details, "StoreName"));
  if (held != nullptr) {
    result.held = {{Translated("Name"), result.name}, {Translated("Address"), AddressOf(*held)}};
  }
  result.isKnown = held != nullptr && replacement != nullptr;
  if (result.isKnown) result.changes = ChangesOf(*held, *replacement);
  return result;
}

}  // namespace Dialogs
