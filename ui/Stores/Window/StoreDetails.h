#pragma once

#include "Model/StoreItem.h"
#include "Shared/Interface.h"
#include "Window/CheckView.h"
#include "Window/GatewayRows.h"

#include <functional>
#include <string>

namespace Stores {

// Everything about one store.
class StoreDetails {
 public:
  struct Parts {
    std::string checkProgram;  // the path of srctl
    std::function<void(const std::string& storeID, const std::string& gatewayName)> chooseGateway;
  };

  explicit StoreDetails(const Parts& parts);
  ~StoreDetails();
  StoreDetails(const StoreDetails&) = delete;
  StoreDetails& operator=(const StoreDetails&) = delete;

  [[nodiscard]] GtkWidget* Widget() const { return interface_.Get("details"); }

  // Shows that store from now on, with its changes.
  void SetItem(StoreItem* item);
  // The same again, after something that the user chose could not be done.
  void Refresh();

 private:
  void Forget();
  void Show();
  void ShowLocation();
  // Goes to the top, the focus too if it was here.
  void Begin();

  const Windows::Interface interface_{"/com/morvane/ServiceRecords/Stores/store-details.ui"};
  GatewayRows gateways_;
  CheckView check_;
  Windows::ObjectPtr<StoreItem> item_;
  gulong changed_ = 0;
};

}  // namespace Stores
