#include "ui/DialogWindowTest.h"
#include "window/LogOnWindow.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using Dialogs::LogOnWindow;
using PropertyList::Dictionary;
using testing::IsSupersetOf;

constexpr const char* kHint = "The last answer was not accepted.";

class LogOnWindowTest : public DialogWindowTest {
 protected:
  LogOnWindowTest() { window_.Present(); }

  void Fill(const char* row, const char* text) const {
    gtk_editable_set_text(window_.Get<GtkEditable>(row), text);
  }
  [[nodiscard]] std::string TextOf(const char* row) const {
    return gtk_editable_get_text(window_.Get<GtkEditable>(row));
  }
  void Paste(const char* row, const char* text) const {
    gdk_clipboard_set_text(gtk_widget_get_clipboard(window_.Get(row)), text);
    g_signal_emit_by_name(gtk_editable_get_delegate(window_.Get<GtkEditable>(row)), "paste-clipboard");
    RunUntil([&] { return !TextOf(row).empty(); });
  }
  [[nodiscard]] std::string AnswerText() const { return std::string(window_.Answer().Text().View()); }
  [[nodiscard]] std::string Hint() const {
    const bool isShown = gtk_widget_get_visible(window_.Get("hint")) != FALSE;
    return isShown ? gtk_label_get_text(window_.Get<GtkLabel>("hint")) : "";
  }
  [[nodiscard]] bool CanBeAccepted() const {
    return gtk_widget_get_sensitive(window_.Get("accept")) != FALSE;
  }

  const LogOnWindow window_{Dictionary{{"Server", "https://gateway.example:8443"},
                                       {"Place", "gateway"},
                                       {"StoreName", "Sales"},
                                       {"GatewayName", "Main"},
                                       {"Realm", "Staff"},
                                       {"NeedsCode", true},
                                       {"CanRemember", true},
                                       {"WasRejected", true}},
                            [](bool /*accepted*/) {}};
};

TEST_F(LogOnWindowTest, SaysWhoAsksAndWhichServerGetsTheAnswer) {
  EXPECT_THAT(
      TextsOf(window_.Get("content")),
      IsSupersetOf({"gateway.example",
                    "The gateway “\u2068Main\u2069” of the store “\u2068Sales\u2069” asks you to log on.",
                    "Server", "https://gateway.example:8443", "What the password is for", "Staff"}));
  EXPECT_NE(gtk_label_get_wrap(window_.Get<GtkLabel>("host")), FALSE);
}

TEST_F(LogOnWindowTest, AnswersWithWhatWasTypedAndChosen) {
  Fill("userName", " mia ");
  Fill("password", " p=ss ");
  Fill("code", " 12 ");
  EXPECT_EQ(AnswerText(), "username=mia\npassword= p=ss \ncode=12\nremember=no\n\n");
  gtk_check_button_set_active(window_.Get<GtkCheckButton>("remember"), TRUE);
  EXPECT_EQ(AnswerText(), "username=mia\npassword= p=ss \ncode=12\nremember=yes\n\n");
}

TEST_F(LogOnWindowTest, TakesTheFirstLineOfWhatIsPasted) {
  for (const char* const row : {"userName", "password", "code"}) Paste(row, "secret\n");
  for (const char* const row : {"userName", "password", "code"}) EXPECT_EQ(TextOf(row), "secret") << row;
  AwaitAcceptable(window_);
}

TEST_F(LogOnWindowTest, SaysThatACharacterCannotBeSentAsLongAsOneIsThere) {
  for (const char* const row : {"userName", "password", "code"}) Fill(row, "secret");
  AwaitAcceptable(window_);
  EXPECT_EQ(Hint(), kHint);

  for (const char* const row : {"userName", "password", "code"}) {
    Fill(row, "sec\tret");
    EXPECT_EQ(Hint(), "That holds a character that cannot be sent.") << row;
    EXPECT_FALSE(CanBeAccepted()) << row;
    Fill(row, "secret");
    EXPECT_EQ(Hint(), kHint) << row;
    EXPECT_TRUE(CanBeAccepted()) << row;
  }
}

}  // namespace
