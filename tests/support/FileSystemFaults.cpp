#include "support/FileSystemFaults.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace TestSupport {
namespace {

const FileSystemFaults* g_faults = nullptr;

// Whether the call fails, with errno set.
bool Fails(FileSystemFaults::Answer FileSystemFaults::*call, int descriptor) {
  if (g_faults == nullptr || !(g_faults->*call)) return false;
  const int error = (g_faults->*call)(descriptor);
  if (error != 0) errno = error;
  return error != 0;
}

}  // namespace

FileSystemFaults::FileSystemFaults() {
  g_faults = this;
}

FileSystemFaults::~FileSystemFaults() {
  g_faults = nullptr;
}

}  // namespace TestSupport

using TestSupport::FileSystemFaults;

extern "C" int fsync(int descriptor) {
  if (TestSupport::Fails(&FileSystemFaults::fsync, descriptor)) return -1;
  return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

extern "C" int fchmod(int descriptor, mode_t mode) noexcept {
  if (TestSupport::Fails(&FileSystemFaults::fchmod, descriptor)) return -1;
  return static_cast<int>(::syscall(SYS_fchmod, descriptor, mode));
}

extern "C" int flock(int descriptor, int operation) noexcept {
  if (TestSupport::Fails(&FileSystemFaults::flock, descriptor)) return -1;
  return static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}

extern "C" ssize_t read(int descriptor, void* buffer, std::size_t size) {
  if (TestSupport::Fails(&FileSystemFaults::read, descriptor)) return -1;
  return ::syscall(SYS_read, descriptor, buffer, size);
}

extern "C" ssize_t write(int descriptor, const void* buffer, std::size_t size) {
  if (TestSupport::Fails(&FileSystemFaults::write, descriptor)) return -1;
  return ::syscall(SYS_write, descriptor, buffer, size);
}

extern "C" int rename(const char* from, const char* to) noexcept {
  if (TestSupport::Fails(&FileSystemFaults::rename, -1)) return -1;
  return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

extern "C" int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
  if (TestSupport::Fails(&FileSystemFaults::linkat, -1)) return -1;
  return static_cast<int>(::syscall(SYS_linkat, fromFolder, from, toFolder, to, flags));
}

extern "C" int fstat(int descriptor, struct stat* status) noexcept {
  const int result = ::fstatat(descriptor, "", status, AT_EMPTY_PATH);
  if (result == 0 && TestSupport::g_faults != nullptr && TestSupport::g_faults->fstat)
    TestSupport::g_faults->fstat(*status);
  return result;
}
