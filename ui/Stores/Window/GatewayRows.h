#pragma once

#include "Model/Store.h"
#include "Shared/Adwaita.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Stores {

// The gateways of the store that is shown, with the default one chosen.
class GatewayRows {
 public:
  using Choose = std::function<void(const std::string& gatewayName)>;

  // `group`: the part of the window that holds them, which outlives this object.
  GatewayRows(AdwPreferencesGroup* group, Choose choose) : group_(group), choose_(std::move(choose)) {}

  void Show(const std::vector<Gateway>& gateways);

 private:
  void Fill(const std::vector<Gateway>& gateways);
  void Clear();
  void Add(const Gateway& gateway);

  AdwPreferencesGroup* const group_;
  const Choose choose_;
  std::vector<Gateway> shown_;
  std::vector<AdwActionRow*> rows_;
  std::vector<GtkCheckButton*> buttons_;
  bool isFilling_ = false;
};

}  // namespace Stores
