#include "Window/FileChoice.h"

#include "Agent/GLibHandles.h"
#include "Shared/Translations.h"
#include "Window/SignalArguments.h"

namespace Stores {

using namespace Windows;

namespace {

using Chosen = std::function<void(const std::vector<std::string>& paths)>;

ObjectPtr<GtkFileFilter> RecordsFilter() {
  ObjectPtr<GtkFileFilter> filter(gtk_file_filter_new());
  gtk_file_filter_set_name(filter.get(), Translated("Service records"));
  gtk_file_filter_add_mime_type(filter.get(), "application/vnd.morvane.servicerecord+xml");
  gtk_file_filter_add_suffix(filter.get(), "cr");
  return filter;
}

ObjectPtr<GtkFileFilter> EverythingFilter() {
  ObjectPtr<GtkFileFilter> filter(gtk_file_filter_new());
  gtk_file_filter_set_name(filter.get(), Translated("All files"));
  gtk_file_filter_add_pattern(filter.get(), "*");
  return filter;
}

std::vector<std::string> PathsFrom(GtkFileChooser* chooser) {
  const ObjectPtr<GListModel> files(gtk_file_chooser_get_files(chooser));
  std::vector<std::string> paths;
  for (guint position = 0; position < g_list_model_get_n_items(files.get()); ++position) {
    const ObjectPtr<GObject> file(g_list_model_get_object(files.get(), position));
    paths.push_back(Taken(g_file_get_path(G_FILE(file.get()))));
  }
  return paths;
}

}  // namespace

void ChooseFiles(GtkWindow* parent, const Chosen& chosen) {
  GtkFileChooserNative* const dialog = gtk_file_chooser_native_new(
      Translated("Add Stores From File"), parent, GTK_FILE_CHOOSER_ACTION_OPEN, Translated("_Open"), nullptr);
  GtkFileChooser* const chooser = GTK_FILE_CHOOSER(dialog);
  gtk_file_chooser_set_select_multiple(chooser, TRUE);
  gtk_file_chooser_add_filter(chooser, RecordsFilter().get());
  gtk_file_chooser_add_filter(chooser, EverythingFilter().get());
  gtk_native_dialog_set_modal(GTK_NATIVE_DIALOG(dialog), TRUE);
  ConnectWith<int>(dialog, "response", [dialog, chosen](int response) {
    if (response == GTK_RESPONSE_ACCEPT) chosen(PathsFrom(GTK_FILE_CHOOSER(dialog)));
    g_object_unref(dialog);
  });
  gtk_native_dialog_show(GTK_NATIVE_DIALOG(dialog));
}

}  // namespace Stores
