#pragma once

#include "Model/Store.h"
#include "Shared/Adwaita.h"
#include "Shared/Interface.h"

#include <functional>
#include <string>
#include <vector>

namespace Stores {

// The gateways of the store that is shown, with the default one chosen.
class GatewayRows {
 public:
  using Choose = std::function<void(const std::string& gatewayName)>;

  // `interface`: of the details, which outlives this object.
  GatewayRows(const Windows::Interface& interface, Choose choose);

  void Show(const std::vector<Gateway>& gateways);

 private:
  void Fill(const std::vector<Gateway>& gateways);
  void Clear();
  void Add(const Gateway& gateway);

  AdwPreferencesGroup* const group_;
  GtkCheckButton* const none_;  // unseen; it is in the buttons' group
  const Choose choose_;
  std::vector<Gateway> shown_;
  std::vector<AdwActionRow*> rows_;
  std::vector<GtkCheckButton*> buttons_;
  bool isFilling_ = false;
};

}  // namespace Stores
