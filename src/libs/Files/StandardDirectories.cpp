#include "libs/Files/StandardDirectories.h"

#include "libs/Files/SystemError.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace Files::StandardDirectories {
namespace {

// The folder in the environment variable; nothing when it is not set or relative.
std::optional<std::filesystem::path> Folder(const char* variable) {
  const char* const value = std::getenv(variable);
  if (value == nullptr || *value != '/') return std::nullopt;
  return value;
}

std::error_code CreateDirectory(const std::string& folder, mode_t mode) {
  if (::mkdir(folder.c_str(), mode) == 0) {
    // The umask may have taken even the owner's rights.
    return ::chmod(folder.c_str(), mode) == 0 ? std::error_code() : LastError();
  }
  const std::error_code error = LastError();
  struct stat status {};
  if (::stat(folder.c_str(), &status) != 0) return error;
  return S_ISDIR(status.st_mode) ? std::error_code() : std::make_error_code(std::errc::not_a_directory);
}

}  // namespace

std::optional<std::filesystem::path> UserApplicationSupport() {
  if (auto configuration = Folder("XDG_CONFIG_HOME")) return configuration;
  if (const auto home = Folder("HOME")) return *home / ".config";
  return std::nullopt;
}

std::filesystem::path MachineApplicationSupport() {
  const char* const variable = std::getenv("XDG_CONFIG_DIRS");
  std::string_view folders = variable != nullptr ? variable : "";
  while (!folders.empty()) {
    const std::string_view first = folders.substr(0, folders.find(':'));
    if (first.starts_with('/')) return first;
    folders.remove_prefix(std::min(first.size() + 1, folders.size()));
  }
  return "/etc/xdg";
}

std::optional<std::filesystem::path> Logs() {
  const char* const home = std::getenv("HOME");
  if (home == nullptr) return std::nullopt;
  return std::string(home) + "/Library/Logs";
}

std::error_code CreateDirectories(const std::filesystem::path& folder, mode_t mode) {
  std::vector<std::filesystem::path> missing;
  std::error_code ignored;
  for (auto at = folder; !at.empty() && !std::filesystem::is_directory(at, ignored); at = at.parent_path()) {
    missing.push_back(at);
  }
  for (auto next = missing.rbegin(); next != missing.rend(); ++next) {
    if (const std::error_code error = CreateDirectory(*next, mode)) return error;
  }
  return {};
}

}  // namespace Files::StandardDirectories
