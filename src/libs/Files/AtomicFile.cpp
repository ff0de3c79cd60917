#include "libs/Files/AtomicFile.h"

#include "libs/Files/FileDescriptor.h"
#include "libs/Files/SystemError.h"
#include "libs/Files/WholeContent.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

namespace Files::AtomicFile {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kNewFileMode = 0600;
constexpr std::string_view kTemporaryMark = ".tmp-";
constexpr std::string_view kRandomPart = "XXXXXX";

// Where the content really is: the file's place, or what a symbolic link there points to.
fs::path Target(const fs::path& file) {
  std::error_code notALink;
  const fs::path link = fs::read_symlink(file, notALink);
  return notALink ? file : file.parent_path() / link;
}

std::string TemporaryPrefix(const fs::path& target) {
  std::string prefix = ".";
  prefix += target.filename().string();
  prefix += kTemporaryMark;
  return prefix;
}

bool IsTemporary(std::string_view name, std::string_view prefix) {
  if (!name.starts_with(prefix) || name.size() != prefix.size() + kRandomPart.size()) return false;
  name.remove_prefix(prefix.size());
  return name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789") ==
         std::string_view::npos;
}

struct Temporary {
  fs::path path;
  FileDescriptor file;
};

// Tells every sweep that the writer lives. Where the file system has no locks, a sweep cannot take one
// either.
void LockForWriting(const FileDescriptor& file) {
  while (::flock(file.Get(), LOCK_EX) != 0 && errno == EINTR) {
  }
}

// Asked by name, because not every file system counts the names of a file.
bool HasItsName(const Temporary& temporary) {
  struct stat opened {};
  struct stat named {};
  return ::fstat(temporary.file.Get(), &opened) == 0 && ::lstat(temporary.path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

std::optional<Temporary> CreateTemporary(const fs::path& target, std::error_code& error) {
  constexpr int kRounds = 8;
  for (int round = 0; round < kRounds; ++round) {
    std::string path = target.parent_path() / (TemporaryPrefix(target) + std::string(kRandomPart));
    FileDescriptor file(::mkostemp(path.data(), O_CLOEXEC));
    if (!file) {
      error = LastError();
      return std::nullopt;
    }
    LockForWriting(file);
    // A sweep that came before the lock has taken the name away; then the next one is tried.
    Temporary temporary{std::move(path), std::move(file)};
    if (HasItsName(temporary)) return temporary;
    ::unlink(temporary.path.c_str());  // still there where a file system tells opened and named files apart
  }
  error = std::make_error_code(std::errc::resource_unavailable_try_again);
  return std::nullopt;
}

std::error_code GiveMode(const FileDescriptor& file, mode_t mode) {
  struct stat status {};
  if (::fstat(file.Get(), &status) == 0 && (status.st_mode & 0777) == mode) return {};
  // A file system without modes refuses the change, and takes the file all the same.
  if (::fchmod(file.Get(), mode) == 0 || errno == EPERM || errno == ENOTSUP) return {};
  return LastError();
}

std::error_code WriteAndRename(Temporary& temporary, const fs::path& target, mode_t mode,
                               std::string_view content) {
  // Holds the lock beyond the close, until the temporary has its final name.
  const FileDescriptor lock(::fcntl(temporary.file.Get(), F_DUPFD_CLOEXEC, 0));
  if (!lock) return LastError();
  if (const std::error_code error = GiveMode(lock, mode)) return error;
  if (const std::error_code error = WriteAll(temporary.file.Get(), content).error) return error;
  if (::fsync(temporary.file.Get()) != 0) return LastError();
  if (!temporary.file.Close()) return LastError();
  return ::rename(temporary.path.c_str(), target.c_str()) == 0 ? std::error_code() : LastError();
}

// The mode for the new content. An error for anything but a regular file, such as a device that a link names.
std::error_code ModeAt(const fs::path& target, mode_t& mode) {
  struct stat status {};
  mode = kNewFileMode;
  if (::lstat(target.c_str(), &status) != 0) return errno == ENOENT ? std::error_code() : LastError();
  if (S_ISLNK(status.st_mode)) return {};
  if (S_ISDIR(status.st_mode)) return std::make_error_code(std::errc::is_a_directory);
  if (!S_ISREG(status.st_mode)) return std::make_error_code(std::errc::invalid_argument);
  mode = status.st_mode & 0777;
  return {};
}

bool HasContent(const fs::path& file, std::string_view content) {
  std::error_code ignored;
  return Read(file, ignored) == content;
}

std::error_code WriteNew(const fs::path& file, std::string_view content) {
  FileDescriptor created(::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode));
  if (!created) return LastError();
  std::error_code error = WriteAll(created.Get(), content).error;
  if (!error && (::fsync(created.Get()) != 0 || !created.Close())) error = LastError();
  if (error) ::unlink(file.c_str());
  return error;
}

FileDescriptor OpenRegular(const fs::path& file, struct stat& status, std::error_code& error) {
  // Not blocking, so that a pipe in the file's place cannot hold the caller.
  FileDescriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!opened || ::fstat(opened.Get(), &status) != 0) {
    error = LastError();
  } else if (S_ISDIR(status.st_mode)) {
    error = std::make_error_code(std::errc::is_a_directory);
  } else if (!S_ISREG(status.st_mode)) {
    error = std::make_error_code(std::errc::invalid_argument);
  }
  return opened;
}

std::chrono::nanoseconds SinceEpoch(const timespec& time) {
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

Stamp StampOf(const struct stat& status) {
  return {.device = status.st_dev,
          .inode = status.st_ino,
          .size = status.st_size,
          .contentChanged = SinceEpoch(status.st_mtim),
          .statusChanged = SinceEpoch(status.st_ctim)};
}

// Whether a change from now on gives the file another stamp.
bool WouldShowChanges(const Stamp& stamp) {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::max(stamp.contentChanged, stamp.statusChanged) + std::chrono::seconds(1) <= now;
}

// A second name takes no space, but not every file system has them.
std::error_code LinkOrCopy(const fs::path& file, const fs::path& kept, std::string_view content) {
  if (::linkat(AT_FDCWD, file.c_str(), AT_FDCWD, kept.c_str(), AT_SYMLINK_FOLLOW) == 0) return {};
  return errno == EEXIST ? LastError() : WriteNew(kept, content);
}

void RemoveUnlessLocked(const fs::path& temporary) {
  const FileDescriptor file(::open(temporary.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (file && ::flock(file.Get(), LOCK_EX | LOCK_NB) == 0) ::unlink(temporary.c_str());
}

}  // namespace

std::optional<std::string> Read(const fs::path& file, std::error_code& error) {
  std::optional<Content> content = ReadUnlessKnown(file, std::nullopt, error);
  if (!content) return std::nullopt;
  return std::move(content->bytes);
}

std::optional<Content> ReadUnlessKnown(const fs::path& file, const std::optional<Stamp>& known,
                                       std::error_code& error) {
  error.clear();
  struct stat status {};
  const FileDescriptor opened = OpenRegular(file, status, error);
  if (error) return std::nullopt;
  const Stamp stamp = StampOf(status);
  if (stamp == known) return std::nullopt;
  Content content;
  if (WouldShowChanges(stamp)) content.stamp = stamp;
  error = ReadAll(opened.Get(), static_cast<std::size_t>(status.st_size), content.bytes);
  if (error) return std::nullopt;
  return content;
}

bool IsMissing(const std::error_code& error) {
  return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

bool GiveRightToRead(const fs::path& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  return ::chmod(file.c_str(), (status.st_mode & 07777) | S_IRUSR) == 0;
}

std::error_code Replace(const fs::path& file, std::string_view content) {
  const fs::path target = Target(file);
  mode_t mode = kNewFileMode;
  std::error_code error = ModeAt(target, mode);
  if (error) return error;
  // Opened first, because after the rename nothing may fail any more.
  const fs::path folder = target.has_parent_path() ? target.parent_path() : ".";
  const FileDescriptor openFolder(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!openFolder) return LastError();
  std::optional<Temporary> temporary = CreateTemporary(target, error);
  if (!temporary) return error;
  error = WriteAndRename(*temporary, target, mode, content);
  if (error) {
    ::unlink(temporary->path.c_str());
    return error;
  }
  // The new content is in place; a folder that cannot be flushed can only lose it with the power.
  static_cast<void>(::fsync(openFolder.Get()));
  return {};
}

std::error_code KeepBeside(const fs::path& file, std::span<const std::string> names) {
  std::error_code error;
  const std::optional<std::string> content = Read(file, error);
  if (!content) return error;
  error = std::make_error_code(std::errc::file_exists);
  for (auto name = names.begin(); error == std::errc::file_exists && name != names.end(); ++name) {
    const fs::path kept = file.parent_path() / *name;
    error = LinkOrCopy(file, kept, *content);
    if (error == std::errc::file_exists && HasContent(kept, *content)) return {};
  }
  return error;
}

void SweepTemporaries(const fs::path& file) {
  const fs::path target = Target(file);
  const fs::path folder = target.has_parent_path() ? target.parent_path() : ".";
  const std::string prefix = TemporaryPrefix(target);
  std::error_code ignored;
  std::vector<fs::path> temporaries;
  for (fs::directory_iterator entry(folder, ignored); entry != fs::directory_iterator();
       entry.increment(ignored)) {
    if (IsTemporary(entry->path().filename().string(), prefix)) temporaries.push_back(entry->path());
  }
  for (const fs::path& temporary : temporaries) RemoveUnlessLocked(temporary);
}

}  // namespace Files::AtomicFile
