#include "libs/Files/Bundle.h"

#include "libs/Files/AtomicFile.h"
#include "libs/Lifetime/NoDestructor.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace Files {
namespace {

namespace fs = std::filesystem;

std::optional<PropertyList::Dictionary> ReadInfo(const fs::path& folder) {
  std::error_code error;
  const std::optional<std::string> content = AtomicFile::Read(folder / "Info.plist", error);
  if (!content) return std::nullopt;
  std::optional<PropertyList::Value> root = PropertyList::Read(*content);
  auto* const info = root ? root->As<PropertyList::Dictionary>() : nullptr;
  if (info == nullptr) return std::nullopt;
  return std::move(*info);
}

std::string Environment(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr ? value : "";
}

std::string FirstLocale() {
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    if (std::string locale = Environment(variable); !locale.empty()) return locale;
  }
  return {};
}

// The locale without its character set and modifier, then its language alone: "de_AT.UTF-8" gives de_AT, de.
std::vector<std::string> LanguagesOf(std::string_view locale) {
  const std::string region(locale.substr(0, locale.find_first_of(".@")));
  const std::string language = region.substr(0, region.find_first_of("_-"));
  return language == region ? std::vector{region} : std::vector{region, language};
}

std::vector<std::string> WantedLanguages() {
  const std::string locales = Environment("LANGUAGE") + ":" + FirstLocale();
  std::vector<std::string> wanted;
  for (std::string_view rest = locales; !rest.empty();) {
    const std::string_view locale = rest.substr(0, rest.find(':'));
    rest.remove_prefix(std::min(locale.size() + 1, rest.size()));
    for (std::string& language : LanguagesOf(locale)) {
      const bool isName = !language.empty() && language.find('/') == std::string::npos;
      if (isName && std::ranges::find(wanted, language) == wanted.end())
        wanted.push_back(std::move(language));
    }
  }
  return wanted;
}

}  // namespace

Bundle::Bundle(fs::path folder, PropertyList::Dictionary info)
    : path_(std::move(folder)), info_(std::move(info)) {}

const Bundle& Bundle::Main() {
  // The log may ask for the version while the process exits.
  static const Lifetime::NoDestructor<Bundle> main([] {
    std::error_code unknown;
    const fs::path executable = fs::read_symlink("/proc/self/exe", unknown);
    if (unknown) return Bundle({}, {});
    return Bundle(executable.parent_path(),
                  ReadInfo(executable.parent_path()).value_or(PropertyList::Dictionary()));
  }());
  return *main;
}

std::optional<Bundle> Bundle::WithPath(const fs::path& folder) {
  std::optional<PropertyList::Dictionary> info = ReadInfo(folder);
  if (!info) return std::nullopt;
  return Bundle(folder, std::move(*info));
}

fs::path Bundle::BuiltInPlugInsPath() const {
  return path_.empty() ? fs::path() : path_ / "PlugIns";
}

std::string Bundle::InfoString(const std::string& key) const {
  const PropertyList::Value* const value = info_.Find(key);
  const auto* const text = value != nullptr ? value->As<std::string>() : nullptr;
  return text != nullptr ? *text : std::string();
}

std::vector<std::string> Bundle::PreferredLocalizations() const {
  std::vector<std::string> languages = WantedLanguages();
  std::erase_if(languages, [this](const std::string& language) {
    std::error_code ignored;
    return !fs::is_directory(ResourcesPath() / (language + ".lproj"), ignored);
  });
  return languages;
}

}  // namespace Files
