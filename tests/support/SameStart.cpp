#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace {

// What a case may change of its process without putting it back.
struct ProcessState {
  std::vector<std::string> environment;
  std::filesystem::path folder;
  std::string locale;
  mode_t mask = 0;

  static ProcessState Now() {
    ProcessState now;
    for (char** entry = environ; *entry != nullptr; ++entry) now.environment.emplace_back(*entry);
    now.folder = Folder();
    now.locale = std::setlocale(LC_ALL, nullptr);
    now.mask = ::umask(0);
    ::umask(now.mask);
    return now;
  }

  void PutBack() const {
    if (environment != Now().environment) PutBackEnvironment();
    if (!folder.empty()) std::filesystem::current_path(folder);
    std::setlocale(LC_ALL, locale.c_str());
    ::umask(mask);
  }

 private:
  // Empty when it has been removed.
  static std::filesystem::path Folder() {
    std::error_code none;
    return std::filesystem::current_path(none);
  }

  void PutBackEnvironment() const {
    ::clearenv();
    for (const std::string& entry : environment) {
      const std::size_t end = entry.find('=');
      ::setenv(entry.substr(0, end).c_str(), entry.c_str() + end + 1, 1);
    }
  }
};

// Cases of a program follow one another in one process; each one starts as if it were the first.
class SameStart : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo& /*test*/) override { state_ = ProcessState::Now(); }
  void OnTestEnd(const testing::TestInfo& /*test*/) override { state_.PutBack(); }

  ProcessState state_;
};

const bool g_isListening = [] {
  // The desktop of whoever runs the tests is not theirs to open windows on.
  for (const char* const display : {"DISPLAY", "WAYLAND_DISPLAY"}) ::unsetenv(display);
  testing::UnitTest::GetInstance()->listeners().Append(new SameStart);
  return true;
}();

}  // namespace
