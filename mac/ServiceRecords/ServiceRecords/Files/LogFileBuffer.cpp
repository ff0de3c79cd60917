#include "Files/LogFileBuffer.h"

#include "libs/Files/WholeContent.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string_view>
#include <utility>

namespace Agent {
namespace {

constexpr mode_t kOwnerOnly = 0600;

// Not blocking, so that a pipe in the log's place cannot hold the agent.
constexpr int kFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

bool IsRegular(const Files::FileDescriptor& file) {
  struct stat status {};
  return ::fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode);
}

Files::FileDescriptor OpenRegular(const std::string& path, int flags) {
  Files::FileDescriptor file(::open(path.c_str(), flags | kFlags, kOwnerOnly));
  return file && IsRegular(file) ? std::move(file) : Files::FileDescriptor();
}

// For the owner's eyes only, under any umask and whoever made the file.
Files::FileDescriptor OpenForAppending(const std::string& path) {
  Files::FileDescriptor file = OpenRegular(path, O_WRONLY | O_APPEND | O_CREAT);
  return file && ::fchmod(file.Get(), kOwnerOnly) == 0 ? std::move(file) : Files::FileDescriptor();
}

// Whether the file has not been renamed or removed since it was opened.
bool IsStillThere(const Files::FileDescriptor& file, const std::string& path) {
  struct stat opened {};
  struct stat there {};
  return ::fstat(file.Get(), &opened) == 0 && ::lstat(path.c_str(), &there) == 0 &&
         opened.st_dev == there.st_dev && opened.st_ino == there.st_ino;
}

// Not open when another process holds the file's lock, which goes with the descriptor.
Files::FileDescriptor OpenAsOnlyWriter(const std::string& path) {
  Files::FileDescriptor file = OpenForAppending(path);
  const bool isOurs = file && ::flock(file.Get(), LOCK_EX | LOCK_NB) == 0 && IsStillThere(file, path);
  return isOurs ? std::move(file) : Files::FileDescriptor();
}

std::string BackupOf(const std::string& path) {
  return path + "BUP";
}

// Byte for byte; nothing happens when the log cannot be read.
void CopyToBackup(const std::string& path) {
  const Files::FileDescriptor source = OpenRegular(path, O_RDONLY);
  if (!source) return;
  const Files::FileDescriptor target = OpenForAppending(BackupOf(path));
  if (!target || ::ftruncate(target.Get(), 0) != 0) return;
  std::array<char, 65536> buffer;
  std::size_t count = 0;
  do {
    count = Files::ReadInto(source.Get(), buffer).bytes;
    static_cast<void>(Files::WriteAll(target.Get(), {buffer.data(), count}));
  } while (count == buffer.size());
}

}  // namespace

bool LogFileBuffer::OpenKeepingBackup(const std::string& path) {
  struct stat status {};
  const bool wasThere = ::lstat(path.c_str(), &status) == 0;
  Take({});  // with its lock, in case it is the same file
  Take(OpenAsOnlyWriter(path));
  if (file_ && wasThere) CopyToBackup(path);
  return Empty();
}

bool LogFileBuffer::BeginAnew(const std::string& path) {
  ::rename(path.c_str(), BackupOf(path).c_str());
  Take({});  // with its lock, in case it is still the same file
  Take(OpenAsOnlyWriter(path));
  return Empty();
}

bool LogFileBuffer::OpenStandardError() {
  Take(Files::FileDescriptor(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)));
  return static_cast<bool>(file_);
}

std::uint64_t LogFileBuffer::Size() const {
  struct stat status {};
  return file_ && ::fstat(file_.Get(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

void LogFileBuffer::Take(Files::FileDescriptor file) {
  file_ = std::move(file);
  pending_.clear();
  lineIsTorn_ = false;
}

bool LogFileBuffer::Empty() {
  if (file_ && ::ftruncate(file_.Get(), 0) != 0) file_.Close();
  return static_cast<bool>(file_);
}

LogFileBuffer::int_type LogFileBuffer::overflow(int_type character) {
  if (!file_) return traits_type::eof();
  if (!traits_type::eq_int_type(character, traits_type::eof())) {
    pending_ += static_cast<char>(static_cast<unsigned char>(character));
  }
  return traits_type::not_eof(character);
}

std::streamsize LogFileBuffer::xsputn(const wchar_t* characters, std::streamsize count) {
  if (!file_) return 0;
  for (std::streamsize i = 0; i < count; ++i) {
    pending_ += static_cast<char>(static_cast<unsigned char>(characters[i]));
  }
  return count;
}

int LogFileBuffer::sync() {
  if (!file_) return -1;
  if (pending_.empty()) return 0;
  // What a failed write left of a line stays a line of its own.
  if (lineIsTorn_) pending_.insert(0, 1, '\n');
  const std::size_t written = Files::WriteAll(file_.Get(), pending_).bytes;
  const bool complete = written == pending_.size();
  if (complete) {
    lineIsTorn_ = false;
  } else if (written != 0) {
    lineIsTorn_ = pending_[written - 1] != '\n';
  }
  pending_.clear();
  return complete ? 0 : -1;
}

}  // namespace Agent
