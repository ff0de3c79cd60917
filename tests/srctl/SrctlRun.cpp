#include "srctl/SrctlRun.h"

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

constexpr char kRedirected[] = R"(exec "$0" "$@" <"$SR_TEST_RUN/input" 2>"$SR_TEST_RUN/errors")";

std::string ReadFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

SrctlRun RunSrctl(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                  const SrctlSetting& setting) {
  const TestSupport::TemporaryFolder folder;
  std::ofstream(folder.Path() / "input", std::ios::binary) << setting.input;
  std::vector<std::string> command{"env"};
  if (!setting.folder.empty()) command.insert(command.end(), {"-C", setting.folder});
  for (const std::string& entry : environment) {
    if (entry.find('=') == std::string::npos) command.insert(command.end(), {"-u", entry});
  }
  for (const std::string& entry : environment) {
    if (entry.find('=') != std::string::npos) command.push_back(entry);
  }
  command.push_back("SR_TEST_RUN=" + folder.Path().string());
  command.insert(command.end(), {"sh", "-c", kRedirected, SR_STAGE_DIR "/bin/srctl"});
  command.insert(command.end(), arguments.begin(), arguments.end());
  TestSupport::ChildProcess child(command);
  const int status = child.Wait();
  return {status, child.Output(), ReadFile(folder.Path() / "errors")};
}
