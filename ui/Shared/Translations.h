#pragma once

#include <filesystem>

namespace Windows {

// The texts of our own windows in the user's language, by gettext.
namespace Translations {

inline constexpr char kDomain[] = "servicerecords";

// Takes the catalogues from that folder, named from the folder of the file that holds `code`, a function of
// the program or library that calls: where they lie does not depend on where everything is installed. Before
// the first text.
void LieIn(const std::filesystem::path& folder, const void* code);

}  // namespace Translations

// The text in the user's language, or as it is. The literal is found by xgettext.
[[nodiscard]] const char* Translated(const char* text);
[[nodiscard]] const char* TranslatedCount(const char* one, const char* several, unsigned long count);

}  // namespace Windows
