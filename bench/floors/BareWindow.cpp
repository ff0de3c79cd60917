// A program that shows an empty window, with the toolkits of the dialogs: bare_window
#include <adwaita.h>

#include <cstdlib>

int main() {
  if (gtk_init_check() == FALSE) return EXIT_FAILURE;
  adw_init();
  gtk_window_present(GTK_WINDOW(adw_window_new()));
  while (g_list_model_get_n_items(gtk_window_get_toplevels()) > 0) g_main_context_iteration(nullptr, TRUE);
  return EXIT_SUCCESS;
}
