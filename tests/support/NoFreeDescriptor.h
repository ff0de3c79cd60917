#pragma once

#include <sys/resource.h>

namespace TestSupport {

// Lets every call that opens a file fail until this object goes, as in a process with too many open files.
class NoFreeDescriptor {
 public:
  NoFreeDescriptor() {
    ::getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit limit{0, before_.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }
  ~NoFreeDescriptor() { ::setrlimit(RLIMIT_NOFILE, &before_); }
  NoFreeDescriptor(const NoFreeDescriptor&) = delete;
  NoFreeDescriptor& operator=(const NoFreeDescriptor&) = delete;

 private:
  rlimit before_{};
};

}  // namespace TestSupport
