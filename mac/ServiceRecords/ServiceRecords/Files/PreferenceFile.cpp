#include "Files/PreferenceFile.h"

#include "DbgTrace.h"
#include "libs/Files/PreferencePath.h"
#include "libs/Files/PropertyListFile.h"
#include "libs/Files/StandardDirectories.h"
#include "libs/Lifetime/NoDestructor.h"

#include <string>
#include <string_view>

namespace Agent {
namespace {

struct PreferenceFiles {
  std::filesystem::path machine;
  std::filesystem::path user;
};

void CreateParent(const std::filesystem::path& file, mode_t mode, std::string_view failure) {
  const std::string folder = file.parent_path();
  const std::error_code error = Files::StandardDirectories::CreateDirectories(folder, mode);
  if (!error) return;
  CSRLog(2, "%s - %@ doesn't exist or can't be created", "preferenceFile", folder);
  CSRLog(2, failure, "preferenceFile", error.message());
}

PreferenceFiles MakePreferenceFolders() {
  PreferenceFiles files{Files::PreferencePath(false), Files::PreferencePath(true)};
  CreateParent(files.machine, Files::StandardDirectories::kSharedFolder,
               "%s - createDirectoryAtPath failed to create global preference directory - %@");
  CreateParent(files.user, Files::StandardDirectories::kPrivateFolder,
               "%s - createDirectoryAtPath failed to create local preference directory - %@");
  Files::PropertyListFile(files.machine).SweepTemporaries();
  Files::PropertyListFile(files.user).SweepTemporaries();
  return files;
}

}  // namespace

const std::filesystem::path& preferenceFile(bool perUser) {
  static const Lifetime::NoDestructor<PreferenceFiles> files(MakePreferenceFolders());
  return perUser ? files->user : files->machine;
}

}  // namespace Agent
