#include "Shared/Translations.h"

#include <dlfcn.h>
#include <libintl.h>

#include <system_error>

namespace Windows {

namespace Translations {

void LieIn(const std::filesystem::path& folder, const void* code) {
  Dl_info holder{};
  if (::dladdr(code, &holder) == 0) return;
  std::error_code error;
  const std::filesystem::path file = std::filesystem::canonical(holder.dli_fname, error);
  if (error) return;
  ::bindtextdomain(kDomain, (file.parent_path() / folder).lexically_normal().c_str());
  ::bind_textdomain_codeset(kDomain, "UTF-8");
}

}  // namespace Translations

const char* Translated(const char* text) {
  return ::dgettext(Translations::kDomain, text);
}

const char* TranslatedCount(const char* one, const char* several, unsigned long count) {
  return ::dngettext(Translations::kDomain, one, several, count);
}

}  // namespace Windows
