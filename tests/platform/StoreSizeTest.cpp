#include "Bus/StoreDictionary.h"
#include "SRLib/Provider/StoreBounds.h"
#include "libs/Lifetime/UniqueHandle.h"
#include "support/StoreBuilders.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <list>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;

GVariant* AsVariant(const PropertyList::Dictionary& dictionary);

GVariant* AsVariant(const PropertyList::Array& dictionaries) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("aa{sv}"));
  for (const PropertyList::Value& dictionary : dictionaries)
    g_variant_builder_add_value(&builder, AsVariant(*dictionary.As<PropertyList::Dictionary>()));
  return g_variant_builder_end(&builder);
}

GVariant* AsVariant(const PropertyList::Value& value) {
  if (const auto* text = value.As<std::string>()) return g_variant_new_string(text->c_str());
  if (const auto* truth = value.As<bool>()) return g_variant_new_boolean(*truth);
  if (const auto* array = value.As<PropertyList::Array>()) return AsVariant(*array);
  return g_variant_new_uint64(value.AsNumber().value());
}

GVariant* AsVariant(const PropertyList::Dictionary& dictionary) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sv}"));
  for (const auto& [key, value] : dictionary.Entries())
    g_variant_builder_add(&builder, "{sv}", key.c_str(), AsVariant(value));
  return g_variant_builder_end(&builder);
}

// The bytes of a call that carries these stores as the service's answer does, in another library's writing.
std::size_t BytesOnTheBus(const PropertyList::Array& stores) {
  const Lifetime::UniqueHandle<GDBusMessage, g_object_unref> message(
      g_dbus_message_new_method_call(nullptr, "/", nullptr, "m"));
  GVariant* list = AsVariant(stores);
  g_dbus_message_set_body(message.get(), g_variant_new_tuple(&list, 1));
  gsize size = 0;
  g_free(g_dbus_message_to_blob(message.get(), &size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr));
  return size;
}

// Texts of every length, because what follows them is aligned.
TEST(StoreSize, IsTheMostThatTheStoreTakesOnTheBus) {
  constexpr std::size_t kCount = 100;
  for (const std::size_t gateways : {0U, 1U, 20U}) {
    std::size_t leastSpare = SIZE_MAX;
    for (std::size_t length = 0; length < 16; ++length) {
      const std::wstring text(length, L'x');
      SRStore store = Store(text, text, std::list(gateways, Gateway(text, text, true)));
      store.SetStoreName(text);
      const PropertyList::Array stores(kCount, Agent::StoreDictionary(store, Agent::BeaconKeys::Omitted));
      const std::size_t bytes = BytesOnTheBus(stores) - BytesOnTheBus({});
      ASSERT_GE(kCount * SizeInList(store), bytes) << length;
      leastSpare = std::min(leastSpare, kCount * SizeInList(store) - bytes);
    }
    EXPECT_LE(leastSpare, kCount * (64 + 16 * gateways)) << "and hardly more than that";
  }
}

}  // namespace
