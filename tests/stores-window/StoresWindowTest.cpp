#include "Window/StoresWindow.h"
#include "stores-window/WidgetTest.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>

namespace Stores {
namespace {

using Windows::ObjectPtr;

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

constexpr char kEmptyPage[] =
    "Open the service-record file that your administrator gave you, or drop it here. Its name usually ends "
    "in .cr.";

struct FileListEnd {
  void operator()(GdkFileList* list) const { g_boxed_free(GDK_TYPE_FILE_LIST, list); }
};

// The window without an agent and a session.
class StoresWindowTest : public TestSupport::WidgetTest {
 protected:
  StoresWindowTest() {
    window_.Present();
    WaitUntil([this] { return gtk_widget_get_mapped(Top()) != FALSE; });
  }

  [[nodiscard]] GtkWidget* Top() const { return GTK_WIDGET(window_.Widget()); }

  // The texts that the user sees.
  [[nodiscard]] std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (GtkWidget* const label : AllOf(Top(), [](GtkWidget* widget) {
           return GTK_IS_LABEL(widget) && gtk_widget_get_mapped(widget) != FALSE;
         })) {
      texts.emplace_back(gtk_label_get_text(GTK_LABEL(label)));
    }
    return texts;
  }

  void ShowPage(Overview::Page page) {
    window_.ShowOverview({page, Overview::Warning::None, "Nobody answers."});
  }

  void Click(const char* button) {
    const auto buttons = AllOf(Top(), [&](GtkWidget* widget) {
      return g_strcmp0(gtk_buildable_get_buildable_id(GTK_BUILDABLE(widget)), button) == 0;
    });
    ASSERT_THAT(buttons, testing::SizeIs(1));
    ASSERT_NE(gtk_widget_get_mapped(buttons[0]), FALSE);
    g_signal_emit_by_name(buttons[0], "clicked");
  }

  // As when files are let go over the window.
  [[nodiscard]] bool Drop(const std::vector<std::string>& uris) const {
    GSList* files = nullptr;
    for (const std::string& uri : uris) files = g_slist_append(files, g_file_new_for_uri(uri.c_str()));
    const std::unique_ptr<GdkFileList, FileListEnd> list(gdk_file_list_new_from_list(files));
    g_slist_free_full(files, g_object_unref);
    GValue value = G_VALUE_INIT;
    g_value_init(&value, GDK_TYPE_FILE_LIST);
    g_value_set_boxed(&value, list.get());
    gboolean isTaken = FALSE;
    const ObjectPtr<GListModel> controllers(gtk_widget_observe_controllers(Top()));
    for (guint position = 0; position < g_list_model_get_n_items(controllers.get()); ++position) {
      const ObjectPtr<GObject> controller(g_list_model_get_object(controllers.get(), position));
      if (GTK_IS_DROP_TARGET(controller.get()) == FALSE) continue;
      g_signal_emit_by_name(controller.get(), "drop", &value, 1.0, 1.0, &isTaken);
    }
    g_value_unset(&value);
    return isTaken != FALSE;
  }

  const ObjectPtr<GListStore> stores_{g_list_store_new(G_TYPE_OBJECT)};
  std::vector<std::string> opened_;
  int retries_ = 0;
  StoresWindow window_{nullptr,
                       {.stores = G_LIST_MODEL(stores_.get()),
                        .details = {.checkProgram = "", .chooseGateway = [](const auto&, const auto&) {}},
                        .wantLocation = [](StoreItem*) {},
                        .openFiles = [this](const std::vector<std::string>& paths) { opened_ = paths; },
                        .retry = [this] { ++retries_; },
                        .mayClose = [] { return true; },
                        .storeChosen = [] {}}};
};

TEST_F(StoresWindowTest, SaysWhatToDoWhereThereIsNoStore) {
  ShowPage(Overview::Page::Empty);
  EXPECT_THAT(Texts(), Contains("No Stores Yet"));
  EXPECT_THAT(Texts(), Contains(kEmptyPage));
  EXPECT_THAT(Texts(), Contains("Add From File…"));
}

TEST_F(StoresWindowTest, ShowsOnePageAtATime) {
  EXPECT_THAT(Texts(), ElementsAre("Application Stores")) << "it is still loading";
  ShowPage(Overview::Page::Unreadable);
  EXPECT_THAT(Texts(), Contains("Your Stores Cannot Be Read"));
  EXPECT_THAT(Texts(), Not(Contains("Add From File…")));
  ShowPage(Overview::Page::Unreachable);
  EXPECT_THAT(Texts(), Contains("Your Stores Cannot Be Reached"));
  EXPECT_THAT(Texts(), Contains("Nobody answers."));
  EXPECT_THAT(Texts(), Contains("Try Again"));
  EXPECT_THAT(Texts(), Not(Contains("Your Stores Cannot Be Read")));
  g_list_store_append(stores_.get(), MakeStoreItem({"s1", "One", "https://one.example", {}}).get());
  ShowPage(Overview::Page::Stores);
  WaitUntil([this] { return testing::Matches(Contains("one.example"))(Texts()); });
  EXPECT_THAT(Texts(), Not(Contains("Try Again")));
  EXPECT_THAT(Texts(), Not(Contains(kEmptyPage)));
  ShowPage(Overview::Page::Loading);
  EXPECT_THAT(Texts(), ElementsAre("Application Stores"));
}

TEST_F(StoresWindowTest, WarnsOfAListThatIsNotSavedWithoutOfferingToStartTheAgent) {
  window_.ShowOverview({Overview::Page::Empty, Overview::Warning::Unsaved});
  EXPECT_THAT(Texts(), Contains(testing::StartsWith("The list could not be saved.")));
  EXPECT_THAT(Texts(), Not(Contains("Start It Again")));
  ShowPage(Overview::Page::Empty);
  EXPECT_THAT(Texts(), Not(Contains(testing::StartsWith("The list could not be saved."))));
}

TEST_F(StoresWindowTest, AsksTheAgentAgainWhereItCannotBeReachedOrHasEnded) {
  ShowPage(Overview::Page::Unreachable);
  Click("retry");
  EXPECT_EQ(retries_, 1);
  window_.ShowOverview({Overview::Page::Empty, Overview::Warning::AgentEnded});
  Click("restart");
  EXPECT_EQ(retries_, 2);
}

TEST_F(StoresWindowTest, TellsWhatIsFurtherBelowWhatWasTold) {
  window_.ShowNotice({.sentences = "One."});
  window_.ShowNotice({.sentences = "Two.", .isGood = true, .isFurther = true});
  EXPECT_THAT(Texts(), Contains("One.\nTwo."));
  window_.ShowNotice({.sentences = "Three."});
  EXPECT_THAT(Texts(), Contains("Three.")) << "what was further to nothing is the only thing told";
}

TEST_F(StoresWindowTest, DoesNotTellAgainWhatTheUserHasClosed) {
  window_.ShowNotice({.sentences = "One."});
  Click("closeNotice");
  EXPECT_THAT(Texts(), Not(Contains("One.")));
  window_.ShowNotice({.sentences = "Two.", .isFurther = true});
  EXPECT_THAT(Texts(), Contains("Two."));
}

TEST_F(StoresWindowTest, TakesAWarningForOneUntilAllThatIsToldIsGood) {
  const auto isWarning = [this] {
    return AllOf(Top(), [](GtkWidget* widget) {
             return gtk_widget_has_css_class(widget, "warning") && gtk_widget_get_mapped(widget) != FALSE;
           }).size() == 1;
  };
  window_.ShowNotice({.sentences = "One."});
  window_.ShowNotice({.sentences = "Two.", .isGood = true, .isFurther = true});
  EXPECT_TRUE(isWarning());
  window_.ShowNotice({.sentences = "Three.", .isGood = true});
  EXPECT_FALSE(isWarning());
}

TEST_F(StoresWindowTest, OpensTheFilesThatAreDroppedOnIt) {
  EXPECT_TRUE(Drop({"file:///home/me/a%20b.cr", "https://store.example/c.cr"}));
  EXPECT_THAT(opened_, ElementsAre("/home/me/a b.cr", "")) << "one is not on this computer";
}

}  // namespace
}  // namespace Stores
