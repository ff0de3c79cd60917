#include "Agent/Reading.h"

#include "Agent/GLibHandles.h"

#include <string>
#include <string_view>
#include <utility>

namespace Stores::Reading {

using namespace Windows;

namespace {

std::string TextOf(GVariant* dictionary, const char* key) {
  const char* text = nullptr;
  return g_variant_lookup(dictionary, key, "&s", &text) ? text : "";
}

// Each element of an array, read by `read`.
template <class Read>
auto EachOf(GVariant* array, Read read) {
  std::vector<decltype(read(array))> all;
  all.reserve(g_variant_n_children(array));
  for (gsize index = 0; index < g_variant_n_children(array); ++index) {
    const VariantPtr child(g_variant_get_child_value(array, index));
    all.push_back(read(child.get()));
  }
  return all;
}

Gateway GatewayFrom(GVariant* dictionary) {
  gboolean isDefault = FALSE;
  g_variant_lookup(dictionary, "IsDefault", "b", &isDefault);
  return {TextOf(dictionary, "GatewayName"), TextOf(dictionary, "GatewayURL"), isDefault != FALSE};
}

Store StoreFrom(GVariant* dictionary) {
  Store store{
      TextOf(dictionary, "StoreID"), TextOf(dictionary, "StoreName"), TextOf(dictionary, "StoreURL"), {}};
  const VariantPtr gateways(g_variant_lookup_value(dictionary, "StoreGateways", G_VARIANT_TYPE("aa{sv}")));
  if (gateways) store.gateways = EachOf(gateways.get(), GatewayFrom);
  return store;
}

StoreOutcome OutcomeFrom(GVariant* dictionary) {
  return {TextOf(dictionary, "StoreID"), TextOf(dictionary, "StoreName"), TextOf(dictionary, "Outcome"),
          TextOf(dictionary, "Reason")};
}

}  // namespace

std::vector<Store> Stores(GVariant* dictionaries) {
  return EachOf(dictionaries, StoreFrom);
}

Finished FinishedOpening(GVariant* parameters) {
  Finished finished;
  const char* outcome = nullptr;
  GVariant* stores = nullptr;
  g_variant_get(parameters, "(t&s@aa{sv})", &finished.opening, &outcome, &stores);
  const VariantPtr owner(stores);
  finished.outcome = outcome;
  finished.stores = EachOf(stores, OutcomeFrom);
  // What is of no store is of the file.
  std::erase_if(finished.stores, [&finished](const StoreOutcome& store) {
    if (store.outcome.empty()) finished.reason = store.reason;
    return store.outcome.empty();
  });
  return finished;
}

Wording::Message MessageFrom(GVariant* dictionary) {
  std::string pattern = TextOf(dictionary, "Pattern");
  if (pattern.empty()) return TextOf(dictionary, "Text");
  std::vector<Wording::Place> places;
  const VariantPtr entries(g_variant_lookup_value(dictionary, "Places", G_VARIANT_TYPE("aa{sv}")));
  if (entries) {
    places = EachOf(entries.get(), [](GVariant* entry) {
      return Wording::Place{TextOf(entry, "Name"), MessageFrom(entry)};
    });
  }
  return {std::move(pattern), std::move(places)};
}

SavedState StateOf(const char* word) {
  const std::string_view state = word;
  if (state == "unreadable") return SavedState::Unreadable;
  return state == "unsaved" ? SavedState::Unsaved : SavedState::Good;
}

}  // namespace Stores::Reading
