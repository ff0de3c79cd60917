#include "ui/DialogWindowTest.h"
#include "window/ReplaceWindow.h"
#include "window/TrustWindow.h"

#include <gmock/gmock.h>

// What a person can read before the answer.
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;
using testing::IsSupersetOf;
using ShownQuestionTest = DialogWindowTest;

TEST_F(ShownQuestionTest, TheTrustDialogTellsWhoseStoreItIsAndWhereItComesFrom) {
  const Dialogs::TrustWindow window(
      {{"StoreName", "Sales"},
       {"StoreURL", "https://stores.example/discovery"},
       {"StoreHost", "stores.example"},
       {"VerifiedHost", "gateway.example"},
       {"VerifiedServer", "gateway"},
       {"StoreProvider", "Example Hosting"},
       {"CertificateName", "Example Trust"},
       {"DocumentPath", "/home/mia/sales.cr"},
       {"StoreGateways",
        Array{Dictionary{{"GatewayName", "Night"}, {"GatewayURL", "https://night.example"}}}}},
      [](bool /*accepted*/) {});
  EXPECT_THAT(TextsOf(window.Get("content")),
              IsSupersetOf({"Add “\u2068Sales\u2069”?", "stores.example", "https://stores.example/discovery",
                            "Verified server", "Default gateway", "gateway.example", "Operated by",
                            "Example Hosting", "Certificate issued by", "Example Trust", "Gateways", "Night",
                            "https://night.example", "File", "/home/mia/sales.cr"}));
}

TEST_F(ShownQuestionTest, TheReplaceDialogTellsWhatIsHeldAndWhatChanges) {
  const Dialogs::ReplaceWindow window(
      {{"DocumentPath", "/home/mia/sales.cr"},
       {"HeldStore", Dictionary{{"StoreName", "Sales"}, {"StoreURL", "https://old.example/discovery"}}},
       {"NewStore", Dictionary{{"StoreName", "Sales"}, {"StoreURL", "https://new.example/discovery"}}}},
      [](bool /*accepted*/) {});
  EXPECT_THAT(TextsOf(window.Get("content")),
              IsSupersetOf({"Replace “\u2068Sales\u2069”?", "The store that you have", "Name", "Sales",
                            "Address", "https://old.example/discovery", "What the new record changes",
                            "Address", "Held: \u2068https://old.example/discovery\u2069",
                            "New: \u2068https://new.example/discovery\u2069", "File", "/home/mia/sales.cr"}));
}

TEST_F(ShownQuestionTest, TheReplaceDialogSaysThatNothingChanges) {
  const Dictionary store{{"StoreName", "Sales"}, {"StoreURL", "https://old.example/discovery"}};
  const Dialogs::ReplaceWindow window({{"HeldStore", store}, {"NewStore", store}}, [](bool /*accepted*/) {});
  EXPECT_THAT(TextsOf(window.Get("content")),
              testing::Contains("Name, address, gateways and beacons stay the same."));
}

}  // namespace
