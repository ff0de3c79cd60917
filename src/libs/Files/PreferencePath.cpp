#include "libs/Files/PreferencePath.h"

#include "libs/Files/StandardDirectories.h"

#include <pwd.h>
#include <unistd.h>

#include <optional>
#include <vector>

namespace Files {
namespace {

// "~" before an absolute path, expanded to the home folder that the user database gives.
std::filesystem::path UnderHome(const std::filesystem::path& path) {
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd* user = nullptr;
  ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &user);
  const std::filesystem::path home = user != nullptr ? user->pw_dir : "~";
  return home / path.relative_path();
}

}  // namespace

std::filesystem::path PreferencePath(bool perUser) {
  const std::filesystem::path name = "Morvane/ServiceRecords.plist";
  std::filesystem::path machine = StandardDirectories::MachineApplicationSupport() / name;
  if (!perUser) return machine;
  const std::optional<std::filesystem::path> user = StandardDirectories::UserApplicationSupport();
  return user ? *user / name : UnderHome(machine);
}

}  // namespace Files
