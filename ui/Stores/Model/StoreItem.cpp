#include "Model/StoreItem.h"

#include <memory>

namespace Stores {

using namespace Windows;

namespace {

struct Content {
  Store store;
  std::optional<Location> location;
  unsigned lastQuestion = 0;
  bool isAsked = false;
};

}  // namespace

struct _StoreItem {
  GObject parent;
  Content* content;
};

G_DEFINE_FINAL_TYPE(StoreItem, store_item, G_TYPE_OBJECT)

static void store_item_init(StoreItem* item) {
  item->content = std::make_unique<Content>().release();
}

static void store_item_finalize(GObject* object) {
  const std::unique_ptr<Content> content(SR_STORE_ITEM(object)->content);
  G_OBJECT_CLASS(store_item_parent_class)->finalize(object);
}

static void store_item_class_init(StoreItemClass* type) {
  G_OBJECT_CLASS(type)->finalize = store_item_finalize;
  g_signal_new("changed", store_item_get_type(), G_SIGNAL_RUN_LAST, 0, nullptr, nullptr, nullptr, G_TYPE_NONE,
               0);
}

ObjectPtr<StoreItem> MakeStoreItem(const Store& store) {
  ObjectPtr<StoreItem> item(SR_STORE_ITEM(g_object_new(store_item_get_type(), nullptr)));
  item->content->store = store;
  return item;
}

const Store& StoreOf(StoreItem* item) {
  return item->content->store;
}

const std::optional<Location>& LocationOf(StoreItem* item) {
  return item->content->location;
}

void SetStore(StoreItem* item, const Store& store) {
  Content& content = *item->content;
  if (content.store == store) return;
  if (content.store.url != store.url) {
    content.location.reset();
    content.isAsked = false;
  }
  content.store = store;
  g_signal_emit_by_name(item, "changed");
}

unsigned AskForLocation(StoreItem* item) {
  item->content->isAsked = true;
  return ++item->content->lastQuestion;
}

bool WasAskedForLocation(StoreItem* item) {
  return item->content->isAsked;
}

void SetLocation(StoreItem* item, unsigned question, const Location& location) {
  Content& content = *item->content;
  if (!content.isAsked || content.lastQuestion != question || content.location == location) return;
  content.location = location;
  g_signal_emit_by_name(item, "changed");
}

}  // namespace Stores
