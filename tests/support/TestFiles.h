#pragma once

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace TestSupport {

inline void WriteFile(const std::filesystem::path& file, const std::string& content) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
}

inline std::string ReadFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

inline mode_t ModeOf(const std::filesystem::path& file) {
  struct stat status {};
  return ::stat(file.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

// The names in the folder, sorted.
inline std::vector<std::string> NamesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

// The umask, until this object goes.
class Umask {
 public:
  explicit Umask(mode_t mask) : before_(::umask(mask)) {}
  ~Umask() { ::umask(before_); }
  Umask(const Umask&) = delete;
  Umask& operator=(const Umask&) = delete;

 private:
  mode_t before_;
};

}  // namespace TestSupport
