#include "LogFileBuffer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace {

constexpr mode_t kOwnerOnly = 0600;

// Not blocking, so that a pipe in the log's place cannot hold the agent.
constexpr int kFlags = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

bool IsRegular(int file) {
  struct stat status {};
  return ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

int OpenRegular(const std::string& path, int flags) {
  const int file = ::open(path.c_str(), flags | kFlags);
  if (file < 0 || IsRegular(file)) return file;
  ::close(file);
  return -1;
}

// New files are made under any umask.
int OpenForWriting(const std::string& path) {
  const int created = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | kFlags, kOwnerOnly);
  if (created < 0) return OpenRegular(path, O_WRONLY | O_TRUNC);
  ::fchmod(created, kOwnerOnly);
  return created;
}

// How many bytes were written before the first failure.
std::size_t WriteAll(int file, std::string_view bytes) {
  std::size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count = ::write(file, bytes.data() + written, bytes.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    written += static_cast<std::size_t>(count);
  }
  return written;
}

}  // namespace

LogFileBuffer::~LogFileBuffer() {
  Close();
}

bool LogFileBuffer::OpenTruncated(const std::string& path) {
  Close();
  file_ = OpenForWriting(path);
  return file_ >= 0;
}

bool LogFileBuffer::OpenStandardError() {
  Close();
  file_ = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
  return file_ >= 0;
}

void LogFileBuffer::Close() {
  if (file_ >= 0) ::close(file_);
  file_ = -1;
  pending_.clear();
  lineIsTorn_ = false;
}

void LogFileBuffer::Copy(const std::string& from, const std::string& to) {
  const int source = OpenRegular(from, O_RDONLY);
  if (source < 0) return;
  if (const int target = OpenForWriting(to); target >= 0) {
    char buffer[65536];
    for (ssize_t count = 0; (count = ::read(source, buffer, sizeof buffer)) > 0;) {
      WriteAll(target, {buffer, static_cast<std::size_t>(count)});
    }
    ::close(target);
  }
  ::close(source);
}

LogFileBuffer::int_type LogFileBuffer::overflow(int_type character) {
  if (file_ < 0) return traits_type::eof();
  if (!traits_type::eq_int_type(character, traits_type::eof())) {
    pending_ += static_cast<char>(static_cast<unsigned char>(character));
  }
  return traits_type::not_eof(character);
}

std::streamsize LogFileBuffer::xsputn(const wchar_t* characters, std::streamsize count) {
  if (file_ < 0) return 0;
  for (std::streamsize i = 0; i < count; ++i) {
    pending_ += static_cast<char>(static_cast<unsigned char>(characters[i]));
  }
  return count;
}

int LogFileBuffer::sync() {
  if (file_ < 0) return -1;
  if (pending_.empty()) return 0;
  // What a failed write left of a line stays a line of its own.
  if (lineIsTorn_) pending_.insert(0, 1, '\n');
  const std::size_t written = WriteAll(file_, pending_);
  const bool complete = written == pending_.size();
  if (complete) {
    lineIsTorn_ = false;
  } else if (written != 0) {
    lineIsTorn_ = pending_[written - 1] != '\n';
  }
  pending_.clear();
  return complete ? 0 : -1;
}
