#include "view/StoreChanges.h"

#include "Shared/ShownText.h"
#include "Shared/Translations.h"
#include "request/Details.h"
#include "view/GatewayWords.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

namespace Dialogs {

using namespace Windows;

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

using Form = std::string (*)(std::string_view foreign);

// The address, and the forms of its host that it does not show itself.
std::string AddressOf(const Dictionary& store, Form form) {
  std::string lines;
  for (const char* const key : {"StoreURL", "StoreHost", "StoreHostASCII"}) {
    AddLine(lines, form(Details::Text(store, key)));
  }
  return lines;
}

std::string OrNone(std::string text) {
  return text.empty() ? Translated("None") : std::move(text);
}

std::string HeldAndNew(const std::string& held, const std::string& replacement) {
  return ShownText::Sentence(Translated("Held: {held}"), {{"held", OrNone(held)}}) + "\n" +
         ShownText::Sentence(Translated("New: {new}"), {{"new", OrNone(replacement)}});
}

// Two texts that differ, exactly where they would look the same.
std::string HeldAndNewAs(Form form, const std::string& held, const std::string& replacement) {
  const Form telling = form(held) == form(replacement) ? ShownText::Exact : form;
  return HeldAndNew(telling(held), telling(replacement));
}

void AddIfDifferent(std::vector<Fact>& changes, const char* caption, const std::string& held,
                    const std::string& replacement) {
  if (held != replacement) changes.push_back({caption, HeldAndNewAs(ShownText::Name, held, replacement)});
}

void AddAddressChange(std::vector<Fact>& changes, const Dictionary& held, const Dictionary& replacement) {
  if (AddressOf(held, ShownText::Exact) == AddressOf(replacement, ShownText::Exact)) return;
  const bool looksSame = AddressOf(held, ShownText::Whole) == AddressOf(replacement, ShownText::Whole);
  const Form form = looksSame ? ShownText::Exact : ShownText::Whole;
  changes.push_back({Translated("Address"), HeldAndNew(AddressOf(held, form), AddressOf(replacement, form))});
}

// An element of a list, as it is shown: exactly where one of the other list's would look the same.
struct Element {
  std::string shown;
  std::string exact;
};

void AddElement(std::vector<Fact>& changes, const char* caption, const Element& element,
                const std::set<std::string>& shownOfOthers) {
  changes.push_back({caption, shownOfOthers.contains(element.shown) ? element.exact : element.shown});
}

using Gateways = std::vector<Details::Gateway>;

Element ElementOf(const Details::Gateway& gateway) {
  return {ShownGateway(gateway.name, gateway.url),
          ShownText::Exact(gateway.name) + "\n" + ShownText::Exact(gateway.url)};
}

std::set<std::string> ShownOf(const Gateways& gateways) {
  std::set<std::string> shown;
  for (const Details::Gateway& gateway : gateways) shown.insert(ElementOf(gateway).shown);
  return shown;
}

std::string DefaultOf(const Gateways& gateways) {
  const auto found = std::ranges::find_if(gateways, &Details::Gateway::isDefault);
  return found != gateways.end() ? found->name : std::string();
}

// All but the mark.
auto ContentOf(const Details::Gateway& gateway) {
  return std::tuple(gateway.name, gateway.url, gateway.authentication, gateway.edition, gateway.rewriteMode);
}

// Those that the other list has not, or not as often.
Gateways Without(const Gateways& others, const Gateways& gateways) {
  std::multiset<decltype(ContentOf({}))> left;
  for (const Details::Gateway& other : others) left.insert(ContentOf(other));
  Gateways without;
  for (const Details::Gateway& gateway : gateways) {
    const auto same = left.find(ContentOf(gateway));
    if (same == left.end()) {
      without.push_back(gateway);
    } else {
      left.erase(same);
    }
  }
  return without;
}

void AddWords(std::vector<Fact>& changes, const char* caption, const std::string& name,
              const std::string& held, const std::string& replacement) {
  if (held == replacement) return;
  changes.push_back({caption, ShownText::Name(name) + "\n" + HeldAndNew(held, replacement)});
}

void AddAlterations(std::vector<Fact>& changes, const Details::Gateway& held,
                    const Details::Gateway& replacement) {
  using namespace GatewayWords;
  const std::string& name = held.name;
  if (held.url != replacement.url) {
    changes.push_back(
        {Translated("Gateway with another address"),
         ShownText::Name(name) + "\n" + HeldAndNewAs(ShownText::Whole, held.url, replacement.url)});
  }
  AddWords(changes, Translated("Gateway with another way to log on"), name,
           OfAuthentication(held.authentication), OfAuthentication(replacement.authentication));
  AddWords(changes, Translated("Gateway of another edition"), name, OfEdition(held.edition),
           OfEdition(replacement.edition));
  AddWords(changes, Translated("Gateway with another rewrite mode"), name, OfRewriteMode(held.rewriteMode),
           OfRewriteMode(replacement.rewriteMode));
}

// Takes out of both lists those that have kept their names.
void AddAltered(std::vector<Fact>& changes, Gateways& held, Gateways& replacement) {
  std::multimap<std::string, Details::Gateway> left;
  for (const Details::Gateway& gateway : held) left.emplace(gateway.name, gateway);
  Gateways altered;
  std::erase_if(replacement, [&](const Details::Gateway& gateway) {
    const auto before = left.find(gateway.name);
    if (before == left.end()) return false;
    AddAlterations(changes, before->second, gateway);
    altered.push_back(before->second);
    left.erase(before);
    return true;
  });
  held = Without(altered, held);
}

void AddGatewayChanges(std::vector<Fact>& changes, const Dictionary& held, const Dictionary& replacement) {
  const Gateways before = Details::Gateways(held);
  const Gateways after = Details::Gateways(replacement);
  AddIfDifferent(changes, Translated("Default gateway"), DefaultOf(before), DefaultOf(after));
  Gateways removed = Without(after, before);
  Gateways added = Without(before, after);
  AddAltered(changes, removed, added);
  const std::set<std::string> shownBefore = ShownOf(before);
  const std::set<std::string> shownAfter = ShownOf(after);
  for (const Details::Gateway& gateway : added) {
    AddElement(changes, Translated("Gateway added"), ElementOf(gateway), shownBefore);
  }
  for (const Details::Gateway& gateway : removed) {
    AddElement(changes, Translated("Gateway removed"), ElementOf(gateway), shownAfter);
  }
}

// What is in the second list only.
void AddMissing(std::vector<Fact>& changes, const char* caption, const std::vector<std::string>& from,
                const std::vector<std::string>& items) {
  const std::set<std::string> raw(from.begin(), from.end());
  std::set<std::string> shown;
  for (const std::string& item : from) shown.insert(ShownText::Whole(item));
  for (const std::string& item : items) {
    if (raw.contains(item)) continue;
    AddElement(changes, caption, {ShownText::Whole(item), ShownText::Exact(item)}, shown);
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
  AddIfDifferent(changes, Translated("Name"), Details::Text(held, "StoreName"),
                 Details::Text(replacement, "StoreName"));
  AddAddressChange(changes, held, replacement);
  AddGatewayChanges(changes, held, replacement);
  AddBeaconChanges(changes, {Translated("Internal beacon added"), Translated("Internal beacon removed")},
                   "InternalBeacons", held, replacement);
  AddBeaconChanges(changes, {Translated("External beacon added"), Translated("External beacon removed")},
                   "ExternalBeacons", held, replacement);
  return changes;
}

void Bound(std::vector<Fact>& changes, std::size_t most) {
  if (changes.size() <= most) return;
  const std::string more = MoreText(changes.size() - most);
  changes.resize(most);
  changes.push_back({Translated("Further changes"), more});
}

}  // namespace

StoreChanges StoreChanges::Of(const Dictionary& details, std::size_t mostChanges) {
  StoreChanges result;
  const Dictionary* const held = StoreIn(details, "HeldStore");
  const Dictionary* const replacement = StoreIn(details, "NewStore");
  result.name = ShownText::Name(Details::Text(held != nullptr ? *held : details, "StoreName"));
  if (held != nullptr) {
    result.held = {{Translated("Name"), result.name},
                   {Translated("Address"), AddressOf(*held, ShownText::Whole)}};
  }
  result.isKnown = held != nullptr && replacement != nullptr;
  if (result.isKnown) result.changes = ChangesOf(*held, *replacement);
  Bound(result.changes, mostChanges);
  return result;
}

}  // namespace Dialogs
