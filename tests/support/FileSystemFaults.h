#pragma once

#include <sys/stat.h>

#include <functional>

namespace TestSupport {

// A file system that answers otherwise than the one of the test's folder, until this object goes. The calls
// of the C library are this test program's own, which ask the functions here first. Only while no other
// thread runs, and one object at a time.
class FileSystemFaults {
 public:
  // Gets the descriptor; returns the error number with which the call fails, or 0 to let it through.
  using Answer = std::function<int(int descriptor)>;

  FileSystemFaults();
  ~FileSystemFaults();
  FileSystemFaults(const FileSystemFaults&) = delete;
  FileSystemFaults& operator=(const FileSystemFaults&) = delete;

  Answer fsync;
  Answer fchmod;
  Answer flock;
  Answer read;
  Answer write;
  Answer rename;  // gets no descriptor
  Answer linkat;  // gets no descriptor
  // May change what fstat reports.
  std::function<void(struct stat& status)> fstat;
};

}  // namespace TestSupport
