#include "Shared/Interface.h"

#include "Shared/Translations.h"

namespace Windows {

Interface::Interface(const char* path) : builder_(gtk_builder_new()) {
  gtk_builder_set_translation_domain(builder_.get(), Translations::kDomain);
  GError* error = nullptr;
  if (gtk_builder_add_from_resource(builder_.get(), path, &error) == FALSE) {
    g_error("%s: %s", path, error->message);
  }
}

GObject* Interface::Find(const char* id) const {
  GObject* const object = gtk_builder_get_object(builder_.get(), id);
  if (object == nullptr) g_error("there is no object %s", id);
  return object;
}

}  // namespace Windows
