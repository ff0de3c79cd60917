#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace TestSupport {

// Sets an environment variable, or takes it away, until this object goes. Only while no other thread runs.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
    if (const char* before = std::getenv(name_.c_str())) before_ = before;
    Assign(value);
  }
  ~EnvironmentVariable() { Assign(before_); }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

 private:
  void Assign(const std::optional<std::string>& value) {
    if (value) {
      ::setenv(name_.c_str(), value->c_str(), 1);
    } else {
      ::unsetenv(name_.c_str());
    }
  }

  std::string name_;
  std::optional<std::string> before_;
};

}  // namespace TestSupport
