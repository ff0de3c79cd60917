#include "Window/StoreDetails.h"
#include "stores-window/WidgetTest.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using Stores::MakeStoreItem;
using Stores::StoreDetails;
using Stores::StoreItem;
using TestSupport::WidgetTest;
using Windows::ObjectPtr;

using testing::ElementsAre;
using testing::IsEmpty;

class StoreDetailsTest : public WidgetTest {
 protected:
  StoreDetailsTest() {
    details_.SetItem(first_.get());
    Present(details_.Widget());
  }

  // The buttons of the gateways.
  [[nodiscard]] std::vector<GtkWidget*> Choices() const {
    return All([](GtkWidget* widget) {
      return GTK_IS_CHECK_BUTTON(widget) && gtk_widget_get_mapped(widget) != FALSE;
    });
  }
  [[nodiscard]] std::vector<bool> Chosen() const {
    std::vector<bool> chosen;
    for (GtkWidget* const button : Choices())
      chosen.push_back(gtk_check_button_get_active(GTK_CHECK_BUTTON(button)) != FALSE);
    return chosen;
  }

  const ObjectPtr<StoreItem> first_ =
      MakeStoreItem({"s1", "One", "https://one.example", {{"Gate", "https://gate.example", true}}});
  const ObjectPtr<StoreItem> second_ = MakeStoreItem(
      {"s2",
       "Two",
       "https://two.example",
       {{"Head Office", "https://head.example", true}, {"Branch", "https://branch.example", false}}});
  std::vector<std::string> wanted_;  // gateways that were chosen
  StoreDetails details_{{.checkProgram = "false",
                         .chooseGateway = [this](const std::string& /*storeID*/, const std::string& gateway) {
                           wanted_.push_back(gateway);
                         }}};
};

TEST_F(StoreDetailsTest, TheOnlyGatewayStaysChosen) {
  ASSERT_THAT(Chosen(), ElementsAre(true));
  gtk_widget_activate(Choices().at(0));
  EXPECT_THAT(Chosen(), ElementsAre(true));
  EXPECT_THAT(wanted_, IsEmpty());
}

TEST_F(StoreDetailsTest, OneOfSeveralGatewaysIsChosenAndNoneIsNot) {
  details_.SetItem(second_.get());
  WaitForFrames();
  ASSERT_THAT(Chosen(), ElementsAre(true, false));
  gtk_widget_activate(Choices().at(0));
  EXPECT_THAT(Chosen(), ElementsAre(true, false));
  gtk_widget_activate(Choices().at(1));
  EXPECT_THAT(Chosen(), ElementsAre(false, true));
  EXPECT_THAT(wanted_, ElementsAre("Branch"));
}

}  // namespace
