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
using testing::SizeIs;

class StoreDetailsTest : public WidgetTest {
 protected:
  StoreDetailsTest() {
    const ObjectPtr<GSimpleActionGroup> actions(g_simple_action_group_new());
    const ObjectPtr<GSimpleAction> remove(g_simple_action_new("remove", nullptr));
    g_action_map_add_action(G_ACTION_MAP(actions.get()), G_ACTION(remove.get()));
    gtk_widget_insert_action_group(GTK_WIDGET(Window()), "app", G_ACTION_GROUP(actions.get()));
    details_.SetItem(first_.get());
    Present(details_.Widget());
  }

  [[nodiscard]] GtkAdjustment* Scrolled() const {
    return gtk_scrolled_window_get_vadjustment(GTK_SCROLLED_WINDOW(details_.Widget()));
  }
  // Between the end of that text and the button of the check.
  [[nodiscard]] float RoomBeforeCheckButton(const std::string& text) const {
    const auto isText = [&text](GtkWidget* widget) {
      return GTK_IS_LABEL(widget) != FALSE && gtk_label_get_text(GTK_LABEL(widget)) == text;
    };
    const auto isButton = [](GtkWidget* widget) { return GTK_IS_BUTTON(widget) != FALSE; };
    const graphene_rect_t before = BoundsOf(All(isText).at(0));
    return BoundsOf(All(isButton).at(0)).origin.x - before.origin.x - before.size.width;
  }
  [[nodiscard]] graphene_rect_t BoundsOf(GtkWidget* widget) const {
    graphene_rect_t bounds{};
    EXPECT_TRUE(gtk_widget_compute_bounds(widget, GTK_WIDGET(Window()), &bounds));
    return bounds;
  }
  [[nodiscard]] GtkWidget* Remove() const {
    return All([](GtkWidget* widget) {
             return GTK_IS_BUTTON(widget) != FALSE &&
                    g_strcmp0(gtk_actionable_get_action_name(GTK_ACTIONABLE(widget)), "app.remove") == 0;
           })
        .at(0);
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

TEST_F(StoreDetailsTest, AddressesAreWhole) {
  details_.SetItem(
      MakeStoreItem(
          {"s3", "Three", "https://three.example:8443/a/b", {{"Gate", "http://gate.example:81/x", true}}})
          .get());
  WaitForFrames();
  for (const char* const shown :
       {"three.example:8443", "https://three.example:8443/a/b", "http://gate.example:81/x"}) {
    EXPECT_THAT(All([shown](GtkWidget* widget) {
                  return GTK_IS_LABEL(widget) != FALSE &&
                         g_strcmp0(gtk_label_get_text(GTK_LABEL(widget)), shown) == 0;
                }),
                SizeIs(1))
        << shown;
  }
}

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

TEST_F(StoreDetailsTest, AnotherStoreBeginsAtItsTopAndNotOnWhatRemovesIt) {
  gtk_widget_grab_focus(Remove());
  gtk_adjustment_set_value(Scrolled(), gtk_adjustment_get_upper(Scrolled()));
  WaitForFrames();
  ASSERT_GT(gtk_adjustment_get_value(Scrolled()), 0);

  details_.SetItem(second_.get());
  WaitForFrames();
  EXPECT_EQ(gtk_adjustment_get_value(Scrolled()), 0);
  EXPECT_TRUE(ADW_IS_ACTION_ROW(gtk_window_get_focus(Window())));
}

TEST_F(StoreDetailsTest, AChangeOfTheStoreLeavesTheFocusAndWhatIsInView) {
  gtk_widget_grab_focus(Remove());
  gtk_adjustment_set_value(Scrolled(), gtk_adjustment_get_upper(Scrolled()));
  WaitForFrames();
  const double before = gtk_adjustment_get_value(Scrolled());

  Stores::SetStore(first_.get(), {"s1", "Won", "https://one.example", {}});
  details_.SetItem(first_.get());
  EXPECT_EQ(gtk_window_get_focus(Window()), Remove());
  EXPECT_EQ(gtk_adjustment_get_value(Scrolled()), before);
}

TEST_F(StoreDetailsTest, ThereIsRoomBetweenWhatTheCheckDoesAndItsButton) {
  EXPECT_GE(RoomBeforeCheckButton("Looks at each server of the store and says what to do"), 12);
}

}  // namespace
