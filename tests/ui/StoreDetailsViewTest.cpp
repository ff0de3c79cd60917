#include "Shared/Gtk.h"
#include "Shared/Owners.h"
#include "libs/Lifetime/UniqueHandle.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/SRUIProtocol/SRUIProtocol.h"
#include "support/VirtualScreen.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <cstddef>
#include <string>
#include <vector>

// A client that has GTK and loads the module itself, on a display without a screen.
namespace {

using TestSupport::VirtualScreen;
using namespace Windows;

using PropertyList::Array;
using PropertyList::Dictionary;
using ::testing::Contains;

const SRUIProtocol* EntryPoints() {
  const Lifetime::UniqueHandle<void, ::dlclose> module(::dlopen(SR_UI_MODULE, RTLD_NOW));
  if (module == nullptr) return nullptr;
  const auto principalClass = reinterpret_cast<decltype(&ServiceRecordUIPrincipalClass)>(
      ::dlsym(module.get(), "ServiceRecordUIPrincipalClass"));
  const SRUIHost host{SRUI_PROTOCOL_VERSION, -1, -1, -1, nullptr};
  return principalClass(&host);
}

GtkWidget* ViewOf(const char* details) {
  return static_cast<GtkWidget*>(EntryPoints()->SRStoreDetailsViewWithDetailsDictionary(details));
}

void CollectTexts(GtkWidget* widget, std::vector<std::string>& texts) {
  if (GTK_IS_LABEL(widget) != FALSE) texts.emplace_back(gtk_label_get_text(GTK_LABEL(widget)));
  for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    CollectTexts(child, texts);
  }
}

TEST(StoreDetailsViewTest, IsAWidgetOfTheClientThatTellsWhatIsKnownOfTheStore) {
  const std::string details = PropertyList::Write(Dictionary{
      {"StoreName", "Sal\u202Ees"},
      {"StoreURL", "https://store.example:8443/path"},
      {"StoreProvider", "Morvane"},
      {"CertificateName", "Root CA"},
      {"StoreGateways",
       Array{Dictionary{{"GatewayName", "Main"}, {"GatewayURL", "https://main"}, {"IsDefault", true}}}}});
  EXPECT_EQ(ViewOf(details.c_str()), nullptr) << "before the client has initialised GTK";

  const VirtualScreen screen;
  screen.ShowOwnWindows();
  ASSERT_NE(gtk_init_check(), FALSE);

  GtkWidget* const view = ViewOf(details.c_str());
  ASSERT_NE(view, nullptr);
  EXPECT_NE(g_object_is_floating(view), FALSE);
  g_object_ref_sink(view);
  const ObjectPtr<GtkWidget> owned(view);
  std::vector<std::string> texts;
  CollectTexts(view, texts);
  for (const char* const text :
       {"Sal<U+202E>es", "store.example", "https://store.example:8443/path", "Operated by", "Morvane",
        "Certificate issued by", "Root CA", "Default gateway", "Main", "https://main"}) {
    EXPECT_THAT(texts, Contains(text));
  }
  EXPECT_EQ(ViewOf(nullptr), nullptr);
  EXPECT_EQ(ViewOf("no property list"), nullptr);
}

}  // namespace
