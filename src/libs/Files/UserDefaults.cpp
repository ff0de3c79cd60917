#include "libs/Files/UserDefaults.h"

#include "libs/Files/PropertyListFile.h"
#include "libs/Files/StandardDirectories.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace Files {
namespace {

// The leading digits with their sign, as the preferences of a person may be typed; 0 without any.
std::int64_t LeadingNumber(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n"), text.size()));
  if (text.starts_with('+')) text.remove_prefix(1);
  std::int64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

}  // namespace

UserDefaults UserDefaults::Standard() {
  const auto folder = StandardDirectories::UserApplicationSupport();
  return UserDefaults(folder ? *folder / "com.morvane.ServiceRecords.plist" : std::filesystem::path());
}

std::int64_t UserDefaults::Integer(const std::string& key) const {
  const PropertyListFile::Reading defaults = PropertyListFile(file_).Load();
  const PropertyList::Value* const value = defaults.Root()->Find(key);
  if (value == nullptr) return 0;
  if (const auto* text = value->As<std::string>()) return LeadingNumber(*text);
  return static_cast<std::int64_t>(value->AsNumber().value_or(0));
}

std::error_code UserDefaults::SetInteger(const std::string& key, std::int64_t value) const {
  if (file_.empty()) return std::make_error_code(std::errc::no_such_file_or_directory);
  if (const std::error_code error = StandardDirectories::CreateDirectories(file_.parent_path())) return error;
  const PropertyListFile file(file_);
  file.SweepTemporaries();
  PropertyListFile::Reading reading = file.Load();
  PropertyList::Dictionary defaults = *reading.Root();
  defaults.Set(key, value);
  return file.Save(reading, std::move(defaults));
}

}  // namespace Files
