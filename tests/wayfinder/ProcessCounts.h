#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <iterator>
#include <thread>

namespace TestSupport {

inline long CountEntries(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

// The test program's own.
inline long OpenDescriptors() {
  return CountEntries("/proc/self/fd");
}
inline long RunningThreads() {
  // The first thread of a program may bring along one of a sanitizer's, which stays.
  [[maybe_unused]] static const bool runtimeIsThere = (std::thread([] {}).join(), true);
  return CountEntries("/proc/self/task");
}

// The kernel tells nobody when a detached thread is gone.
[[nodiscard]] inline bool ComesTrue(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

}  // namespace TestSupport
