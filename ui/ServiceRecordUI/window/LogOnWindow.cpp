#include "window/LogOnWindow.h"

#include "Shared/Adwaita.h"
#include "Shared/Signals.h"
#include "Shared/Translations.h"
#include "Shared/Widgets.h"
#include "libs/Text/TextHelpers.h"
#include "view/LogOnQuestion.h"
#include "view/StoreView.h"

#include <algorithm>

namespace Dialogs {

using namespace Windows;

namespace {

namespace Words = CredentialWire::CredentialWords;

constexpr const char* kUserName = "userName";
constexpr const char* kPassword = "password";
constexpr const char* kCode = "code";

// A line of the reply cannot hold a control character.
bool IsFit(std::string_view text) {
  return std::ranges::none_of(text, util::IsAsciiControl);
}

const char* FirstToFillIn(const LogOnQuestion& question) {
  if (!question.needsPassword) return kCode;
  return question.userName.empty() ? kUserName : kPassword;
}

// What is copied often ends with its line, which is no part of it.
void PasteOneLine(GtkEditable* row) {
  gtk_text_set_truncate_multiline(GTK_TEXT(gtk_editable_get_delegate(row)), TRUE);
}

// Text that the toolkit keeps in locked memory and wipes.
void KeepSecret(GtkEditable* row) {
  const ObjectPtr<GtkEntryBuffer> buffer(gtk_password_entry_buffer_new());
  gtk_text_set_buffer(GTK_TEXT(gtk_editable_get_delegate(row)), buffer.get());
}

// The field is what has the focus, so it has the name. The row holds its title twice and would be named so.
void NameField(GtkWidget* row) {
  GtkEditable* const field = gtk_editable_get_delegate(GTK_EDITABLE(row));
  const char* const title = adw_preferences_row_get_title(ADW_PREFERENCES_ROW(row));
  for (GtkWidget* const named : {row, GTK_WIDGET(field)}) Widgets::SetAccessibleName(named, title);
}

// An icon that can be pressed is known by its tooltip.
void NameIcons(GtkWidget* parent) {
  for (GtkWidget* child = gtk_widget_get_first_child(parent); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    const char* const tooltip = gtk_widget_get_tooltip_text(child);
    if (tooltip != nullptr && GTK_IS_TEXT(child) == FALSE) Widgets::SetAccessibleName(child, tooltip);
    NameIcons(child);
  }
}

}  // namespace

LogOnWindow::LogOnWindow(const PropertyList::Dictionary& details,
                         const std::function<void(bool accepted)>& onAnswer)
    : QuestionWindow("/com/morvane/ServiceRecords/dialogs/log-on.ui", onAnswer) {
  const LogOnQuestion question = LogOnQuestion::Of(details);
  needsPassword_ = question.needsPassword;
  needsCode_ = question.needsCode;
  hint_ = question.hint;
  gtk_label_set_text(Get<GtkLabel>("introduction"), question.introduction.c_str());
  gtk_label_set_text(Get<GtkLabel>("host"), question.host.c_str());
  Widgets::Wrap(Get<GtkLabel>("host"));
  gtk_box_append(Get<GtkBox>("facts"), MakeFactList(Translated("Who asks"), question.facts));

  gtk_widget_set_visible(Get(kUserName), static_cast<gboolean>(needsPassword_));
  gtk_widget_set_visible(Get(kPassword), static_cast<gboolean>(needsPassword_));
  gtk_widget_set_visible(Get(kCode), static_cast<gboolean>(needsCode_));
  gtk_widget_set_visible(Get("remember"), static_cast<gboolean>(question.canRemember));
  Widgets::SetAccessibleName(Get("remember"), gtk_label_get_text(Get<GtkLabel>("rememberLabel")));
  for (const char* const row : {kPassword, kCode}) KeepSecret(Get<GtkEditable>(row));
  for (const char* const row : {kUserName, kPassword, kCode}) {
    NameField(Get(row));
    NameIcons(Get(row));
    PasteOneLine(Get<GtkEditable>(row));
    Signals::Connect(Get(row), "changed", [this] { Look(); });
  }
  gtk_editable_set_text(Get<GtkEditable>(kUserName), question.userName.c_str());
  gtk_widget_grab_focus(Get(FirstToFillIn(question)));
  Look();
}

std::string_view LogOnWindow::TextOf(const char* row) const {
  return gtk_editable_get_text(Get<GtkEditable>(row));
}

void LogOnWindow::Look() {
  const bool hasName = !needsPassword_ || !util::Trimmed(TextOf(kUserName)).empty();
  const bool hasCode = !needsCode_ || !util::Trimmed(TextOf(kCode)).empty();
  const bool isFit = IsFit(TextOf(kUserName)) && IsFit(TextOf(kPassword)) && IsFit(TextOf(kCode));
  SetComplete(hasName && hasCode && isFit);
  ShowHint(isFit ? hint_ : Translated("That holds a character that cannot be sent."));
}

void LogOnWindow::ShowHint(const std::string& hint) {
  GtkLabel* const label = Get<GtkLabel>("hint");
  if (gtk_label_get_text(label) == hint) return;
  gtk_label_set_text(label, hint.c_str());
  gtk_widget_set_visible(GTK_WIDGET(label), static_cast<gboolean>(!hint.empty()));
  FitHeight();
}

CredentialWire::CredentialMessage LogOnWindow::Answer() const {
  const bool remembers = gtk_check_button_get_active(Get<GtkCheckButton>("remember")) != FALSE;
  CredentialWire::CredentialMessage answer;
  // All of it is fit, or there would be no answer.
  static_cast<void>(answer.Set(Words::kUserName, util::Trimmed(TextOf(kUserName))));
  static_cast<void>(answer.Set(Words::kPassword, TextOf(kPassword)));
  static_cast<void>(answer.Set(Words::kCode, util::Trimmed(TextOf(kCode))));
  static_cast<void>(answer.Set(Words::kRemember, remembers ? Words::kYes : Words::kNo));
  return answer;
}

}  // namespace Dialogs
