#include "Window/CheckView.h"

#include "Shared/Interface.h"
#include "Shared/ShownMessage.h"
#include "Shared/ShownText.h"
#include "Shared/Signals.h"
#include "Shared/Translations.h"
#include "Window/Rows.h"

#include <string_view>
#include <utility>

namespace Stores {

using namespace Windows;

namespace {

std::string NameOf(const std::string& check) {
  const std::string_view name = check;
  if (name == "server") return Translated("Server");
  if (name == "gateway") return Translated("Gateway");
  if (name == "discovery document") return Translated("Discovery document");
  if (name == "location") return Translated("Location");
  if (name == "agent") return Translated("Background service");
  return ShownText::Name(check);
}

struct Mark {
  const char* icon;
  const char* word;
};

Mark MarkOf(CheckFinding::Result result) {
  switch (result) {
    case CheckFinding::Result::Ok:
      return {"object-select-symbolic", Translated("Good")};
    case CheckFinding::Result::Problem:
      return {"dialog-warning-symbolic", Translated("Problem")};
    case CheckFinding::Result::Note:
      break;
  }
  return {"dialog-information-symbolic", Translated("Note")};
}

const char* SentenceOf(CheckEnd end) {
  switch (end) {
    case CheckEnd::Done:
      break;
    case CheckEnd::NotInList:
      return Translated("The store is no longer in the list.");
    case CheckEnd::Unreachable:
      return Translated("The background service cannot be reached.");
    case CheckEnd::Failed:
      return Translated("The check could not be made. Install the program again.");
  }
  return nullptr;
}

}  // namespace

CheckView::CheckView(const Interface& interface, std::string program)
    : group_(interface.Get<AdwPreferencesGroup>("check")),
      spinner_(interface.Get("spinner")),
      label_(interface.Get<GtkLabel>("checkLabel")),
      program_(std::move(program)) {
  ShowRunning(false);
  Signals::Connect(interface.Get("checkButton"), "clicked", [this] { Toggle(); });
}

void CheckView::SetStore(const std::string& id) {
  if (id == storeID_) return;
  Stop();
  for (AdwActionRow* row : rows_) adw_preferences_group_remove(group_, GTK_WIDGET(row));
  rows_.clear();
  storeID_ = id;
}

void CheckView::Toggle() {
  if (check_) return Stop();
  const std::string id = std::exchange(storeID_, {});
  SetStore(id);
  check_ = StoreCheck::Start(program_, id,
                             {.found = [this](const CheckFinding& finding) { Take(finding); },
                              .ended = [this](CheckEnd end) { TakeEnd(end); }});
  ShowRunning(check_ != nullptr);
  if (!check_) TakeEnd(CheckEnd::Failed);
}

void CheckView::Stop() {
  check_.reset();
  ShowRunning(false);
}

void CheckView::Take(const CheckFinding& finding) {
  const Mark mark = MarkOf(finding.result);
  std::string text = ShownMessage(finding.text);
  if (!finding.next.IsEmpty()) text += '\n' + ShownMessage(finding.next);
  AddRow(NameOf(finding.check), text, mark.icon, mark.word);
}

void CheckView::TakeEnd(CheckEnd end) {
  Stop();
  if (const char* const sentence = SentenceOf(end)) {
    const Mark mark = MarkOf(CheckFinding::Result::Problem);
    AddRow(Translated("Check"), sentence, mark.icon, mark.word);
  }
}

void CheckView::AddRow(const std::string& title, const std::string& text, const char* icon,
                       const char* word) {
  AdwActionRow* const row = Rows::Make(title, text);
  adw_action_row_add_prefix(row, Rows::MakeIcon(icon));
  GtkWidget* const mark = gtk_label_new(word);
  gtk_widget_add_css_class(mark, "caption");
  adw_action_row_add_suffix(row, mark);
  adw_preferences_group_add(group_, GTK_WIDGET(row));
  rows_.push_back(row);
}

void CheckView::ShowRunning(bool running) {
  gtk_widget_set_visible(spinner_, running);
  gtk_spinner_set_spinning(GTK_SPINNER(spinner_), running);
  adw_preferences_group_set_description(
      group_, running ? Translated("Asking the servers of the store…")
                      : Translated("Looks at each server of the store and says what to do"));
  gtk_label_set_label(label_, running ? Translated("_Stop") : Translated("_Check"));
}

}  // namespace Stores
