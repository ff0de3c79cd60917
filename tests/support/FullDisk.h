#pragma once

#include <sys/resource.h>

#include <csignal>

namespace TestSupport {

// Lets every write beyond the first bytes of a file fail until this object goes, as on a full disk.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) : signalBefore_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, signalBefore_);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before_{};
  void (*signalBefore_)(int);
};

}  // namespace TestSupport
