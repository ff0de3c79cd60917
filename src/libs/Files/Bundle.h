#pragma once

#include "libs/PropertyList/PropertyList.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Files {

// A folder with an Info.plist: the application's own, or a plug-in's. Immutable; any thread.
class Bundle {
 public:
  // The folder of the running executable. Its path is empty when the system cannot tell; without an
  // Info.plist it has no values.
  static const Bundle& Main();

  // Nothing when the folder or its Info.plist is missing or cannot be read.
  static std::optional<Bundle> WithPath(const std::filesystem::path& folder);

  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
  [[nodiscard]] std::filesystem::path ResourcesPath() const { return path_ / "Resources"; }
  // Empty when the bundle's own path is.
  [[nodiscard]] std::filesystem::path BuiltInPlugInsPath() const;

  // A string of the Info.plist, UTF-8; empty when there is none of that name.
  [[nodiscard]] std::string InfoString(const std::string& key) const;

  // The languages of the user's preference that the bundle has a Resources/<language>.lproj folder for, most
  // preferred first, read afresh from the environment: LANGUAGE, then the first set one of LC_ALL,
  // LC_MESSAGES, LANG. A region falls back to its language (de_AT to de).
  [[nodiscard]] std::vector<std::string> PreferredLocalizations() const;

 private:
  Bundle(std::filesystem::path folder, PropertyList::Dictionary info);

  std::filesystem::path path_;
  PropertyList::Dictionary info_;
};

}  // namespace Files
