#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

namespace Files {

// The user's preferences for the agent: com.morvane.ServiceRecords.plist in the per-user application-support
// folder. Read afresh at every call, so that another program's change is seen. Any thread.
class UserDefaults {
 public:
  explicit UserDefaults(std::filesystem::path file) : file_(std::move(file)) {}

  // The file of this user.
  static UserDefaults Standard();

  // A whole number, a boolean (0 or 1), a real (truncated) or a string of digits; 0 when there is none.
  [[nodiscard]] std::int64_t Integer(const std::string& key) const;

  // Keeps the other values of the file. The error with which the file could not be written.
  [[nodiscard]] std::error_code SetInteger(const std::string& key, std::int64_t value) const;

  [[nodiscard]] const std::filesystem::path& Path() const { return file_; }

 private:
  std::filesystem::path file_;
};

}  // namespace Files
