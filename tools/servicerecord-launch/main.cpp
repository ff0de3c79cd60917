#include "libs/Desktop/DesktopIntegration.h"

#include <unistd.h>

#include <cstdlib>

namespace {

constexpr int kUsageError = 2;

// Where a user's programs start.
void EnterHome() {
  const char* const home = std::getenv("HOME");
  if (home == nullptr || ::chdir(home) != 0) static_cast<void>(::chdir("/") == 0);
}

}  // namespace

// Launches the application whose identifier is the argument, and ends. A program of its own, because the
// desktop's library keeps threads and a bus connection once it has launched something, and because the
// application must not start in the agent's folder or on its terminal.
int main(int argc, char** argv) {
  if (argc != 2) return kUsageError;
  EnterHome();
  ::setsid();
  ::dup2(STDERR_FILENO, STDOUT_FILENO);  // this program's output ends at the agent
  return Desktop::LaunchApplication(argv[1]) ? EXIT_SUCCESS : EXIT_FAILURE;
}
