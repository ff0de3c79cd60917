#pragma once

#include <unistd.h>

#include <utility>

namespace testsupport {

// Owns a file descriptor.
class OwnedDescriptor {
 public:
  explicit OwnedDescriptor(int descriptor = -1) noexcept : descriptor_(descriptor) {}
  ~OwnedDescriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  OwnedDescriptor(OwnedDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }

  [[nodiscard]] int Get() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace testsupport
