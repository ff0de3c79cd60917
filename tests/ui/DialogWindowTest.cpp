#include "ui/DialogWindowTest.h"

#include "Shared/Adwaita.h"

#include <chrono>
#include <stdexcept>
#include <utility>

DialogWindowTest::DialogWindowTest() {
  screen_.ShowOwnWindows();
  if (gtk_init_check() == FALSE) throw std::runtime_error("no display");
  adw_init();
}

void DialogWindowTest::RunUntil(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("waited in vain");
    g_main_context_iteration(nullptr, FALSE);
  }
}

void DialogWindowTest::AwaitAcceptable(const Dialogs::DialogWindow& window) {
  RunUntil([&window] { return gtk_widget_get_sensitive(window.Get("accept")) != FALSE; });
}

std::vector<std::string> DialogWindowTest::TextsOf(GtkWidget* widget) {
  std::vector<std::string> texts;
  if (GTK_IS_LABEL(widget) != FALSE) texts.emplace_back(gtk_label_get_text(GTK_LABEL(widget)));
  for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    for (std::string& text : TextsOf(child)) texts.push_back(std::move(text));
  }
  return texts;
}
