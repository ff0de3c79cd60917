#include "Shared/Translations.h"

#include <dlfcn.h>
#include <libintl.h>
#include <link.h>

#include <system_error>

namespace Windows {

namespace Translations {

namespace {

// The loader names a library by its path, but the program as whoever started it did: by no more than its name
// where PATH is searched. In its list the program has no name at all.
std::filesystem::path HolderOf(const void* code) {
  Dl_info holder{};
  void* entry = nullptr;
  if (::dladdr1(code, &holder, &entry, RTLD_DL_LINKMAP) == 0) return {};
  const std::filesystem::path library = static_cast<const link_map*>(entry)->l_name;
  return library.empty() ? "/proc/self/exe" : library;
}

}  // namespace

void LieIn(const std::filesystem::path& folder, const void* code) {
  std::error_code error;
  const std::filesystem::path file = std::filesystem::canonical(HolderOf(code), error);
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
