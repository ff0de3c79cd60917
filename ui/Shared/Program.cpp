#include "Shared/Program.h"

#include "Shared/Gtk.h"
#include "Shared/Translations.h"

namespace Windows::Program {

void Prepare(const char* applicationId, const std::filesystem::path& catalogues) {
  // Without a graphics processor the other renderers take longer to the first frame, and more memory.
  g_setenv("GSK_RENDERER", "cairo", FALSE);
  g_set_prgname(applicationId);
  Translations::LieIn(catalogues, reinterpret_cast<const void*>(&Prepare));
}

}  // namespace Windows::Program
