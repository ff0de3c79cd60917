#include "Shared/Gtk.h"
#include "Shared/Owners.h"
#include "libs/Files/FileDescriptor.h"
#include "libs/Lifetime/UniqueHandle.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/SRUIProtocol/SRUIProtocol.h"
#include "support/ChildProcess.h"
#include "support/EnvironmentVariable.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

// A client that has GTK and loads the module itself, on a display without a screen.
namespace {

using PropertyList::Array;
using PropertyList::Dictionary;
using ::testing::Contains;

// A display that ends with this object.
class Display {
 public:
  Display() {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) return;
    const Files::FileDescriptor ours(ends[0]);
    Files::FileDescriptor theirs(ends[1]);
    server_.emplace(
        std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(theirs.Get()), "-nolisten", "tcp"},
        std::vector<std::string>{}, TestSupport::ChildOptions{true, {theirs.Get()}});
    theirs.Close();
    pollfd state{ours.Get(), POLLIN, 0};
    std::array<char, 16> number{};
    if (::poll(&state, 1, 30000) > 0 && ::read(ours.Get(), number.data(), number.size() - 1) > 0) {
      name_ = ":" + std::to_string(std::stoi(number.data()));
    }
  }

  [[nodiscard]] const std::string& Name() const { return name_; }

 private:
  std::optional<TestSupport::ChildProcess> server_;
  std::string name_;
};

const SRUIProtocol* EntryPoints() {
  const Lifetime::UniqueHandle<void, ::dlclose> module(::dlopen(SR_UI_MODULE, RTLD_NOW));
  if (module == nullptr) return nullptr;
  const auto principalClass = reinterpret_cast<decltype(&ServiceRecordUIPrincipalClass)>(
      ::dlsym(module.get(), "ServiceRecordUIPrincipalClass"));
  const SRUIHost host{SRUI_PROTOCOL_VERSION, -1, -1, -1};
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
      {"StoreURL", "https://store.example/path"},
      {"StoreProvider", "Morvane"},
      {"CertificateName", "Root CA"},
      {"StoreGateways",
       Array{Dictionary{{"GatewayName", "Main"}, {"GatewayURL", "https://main"}, {"IsDefault", true}}}}});
  EXPECT_EQ(ViewOf(details.c_str()), nullptr) << "before the client has initialised GTK";

  const Display display;
  const TestSupport::EnvironmentVariable name("DISPLAY", display.Name());
  const TestSupport::EnvironmentVariable backend("GDK_BACKEND", "x11");
  const TestSupport::EnvironmentVariable accessibility("GTK_A11Y", "none");
  const TestSupport::EnvironmentVariable bus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
  ASSERT_NE(gtk_init_check(), FALSE);

  GtkWidget* const view = ViewOf(details.c_str());
  ASSERT_NE(view, nullptr);
  EXPECT_NE(g_object_is_floating(view), FALSE);
  g_object_ref_sink(view);
  const ObjectPtr<GtkWidget> owned(view);
  std::vector<std::string> texts;
  CollectTexts(view, texts);
  for (const char* const text :
       {"Sal<U+202E>es", "store.example", "Operated by", "Morvane", "Certificate issued by", "Root CA",
        "Default gateway", "Main", "https://main"}) {
    EXPECT_THAT(texts, Contains(text));
  }
  EXPECT_EQ(ViewOf(nullptr), nullptr);
  EXPECT_EQ(ViewOf("no property list"), nullptr);
}

}  // namespace
