#include "Shared/Translations.h"

#include <libintl.h>

// Where the catalogues of the program or library are that this is in.
extern "C" [[gnu::visibility("default")]] const char* CatalogueFolder() {
  using namespace Windows::Translations;
  LieIn("../catalogues", reinterpret_cast<const void*>(&CatalogueFolder));
  return ::bindtextdomain(kDomain, nullptr);
}
