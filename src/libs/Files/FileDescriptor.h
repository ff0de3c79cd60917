#pragma once

#include <unistd.h>

#include <utility>

namespace Files {

// Owns a file descriptor.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
      Close();
      descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { Close(); }

  [[nodiscard]] int Get() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }

  // False, with the reason in errno, when it fails: the last chance of a network file system to report a
  // failed write. Closed it is in any case.
  bool Close() noexcept {
    const int descriptor = std::exchange(descriptor_, -1);
    return descriptor < 0 || ::close(descriptor) == 0;
  }

 private:
  int descriptor_ = -1;
};

}  // namespace Files
