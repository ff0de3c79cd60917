#pragma once

#include "Agent/GLibHandles.h"
#include "Model/Store.h"
#include "Model/StoreItem.h"

#include <string>
#include <vector>

namespace Stores {

// The stores as a list model, by name. An item stays the same for as long as its store is in the list. The
// thread of the main context.
class StoreList {
 public:
  StoreList();

  // A list of StoreItem; lives as long as this object.
  [[nodiscard]] GListModel* Model() const { return G_LIST_MODEL(items_.get()); }

  // Takes the stores over from the agent's list, which has each id once.
  void Take(const std::vector<Store>& stores);

  // Null when there is none; borrowed from the list.
  [[nodiscard]] StoreItem* Find(const std::string& id) const;
  // The items of the stores with that address.
  [[nodiscard]] std::vector<StoreItem*> FindByURL(const std::string& url) const;
  [[nodiscard]] guint Count() const { return g_list_model_get_n_items(Model()); }
  [[nodiscard]] StoreItem* At(guint position) const;

 private:
  using Items = std::vector<Windows::ObjectPtr<StoreItem>>;

  [[nodiscard]] Items InOrder(const std::vector<Store>& stores) const;
  void Replace(const Items& items);

  const Windows::ObjectPtr<GListStore> items_;
};

}  // namespace Stores
