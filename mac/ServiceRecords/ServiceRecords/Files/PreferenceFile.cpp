#include "Files/PreferenceFile.h"

#include "DbgTrace.h"
#include "libs/Files/PropertyListFile.h"
#include "libs/Files/StandardDirectories.h"

#include <pwd.h>
#include <unistd.h>

#include <string>
#include <string_view>
#include <vector>

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

struct PreferenceFiles {
  std::filesystem::path machine;
  std::filesystem::path user;
};

void CreateParent(const std::filesystem::path& file, mode_t mode, std::string_view failure) {
  const std::string folder = file.parent_path();
  const std::error_code error = StandardDirectories::CreateDirectories(folder, mode);
  if (!error) return;
  CSRLog(2, "%s - %@ doesn't exist or can't be created", "preferenceFile", folder);
  CSRLog(2, failure, "preferenceFile", error.message());
}

PreferenceFiles ComputePreferenceFiles() {
  const std::filesystem::path name = "Morvane/ServiceRecords.plist";
  PreferenceFiles files;
  files.machine = StandardDirectories::MachineApplicationSupport() / name;
  const auto userFolder = StandardDirectories::UserApplicationSupport();
  files.user = userFolder ? *userFolder / name : UnderHome(files.machine);
  CreateParent(files.machine, StandardDirectories::kSharedFolder,
               "%s - createDirectoryAtPath failed to create global preference directory - %@");
  CreateParent(files.user, StandardDirectories::kPrivateFolder,
               "%s - createDirectoryAtPath failed to create local preference directory - %@");
  PropertyListFile(files.machine).SweepTemporaries();
  PropertyListFile(files.user).SweepTemporaries();
  return files;
}

}  // namespace

const std::filesystem::path& preferenceFile(bool perUser) {
  static const auto& files = *new PreferenceFiles(ComputePreferenceFiles());
  return perUser ? files.user : files.machine;
}
