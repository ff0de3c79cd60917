#include "agent/ProcessFigures.h"

#include "common/FileContent.h"

#include <filesystem>
#include <stdexcept>

namespace Bench {
namespace {

std::filesystem::path Folder(pid_t process) {
  return std::filesystem::path("/proc") / std::to_string(process);
}

// The number behind "name:" at the begin of a line.
std::uint64_t Number(const std::filesystem::path& file, const std::string& name) {
  const std::string text = "\n" + ReadFile(file);
  const std::size_t at = text.find("\n" + name + ":");
  if (at == std::string::npos) throw std::runtime_error(file.string() + " has no " + name);
  return std::stoull(text.substr(at + name.size() + 2));
}

}  // namespace

double Memory(pid_t process, const std::string& line) {
  return 1024 * static_cast<double>(Number(Folder(process) / "smaps_rollup", line));
}

std::uint64_t Switches(pid_t process) {
  std::uint64_t switches = 0;
  for (const auto& thread : std::filesystem::directory_iterator(Folder(process) / "task")) {
    switches += Number(thread.path() / "status", "voluntary_ctxt_switches");
    switches += Number(thread.path() / "status", "nonvoluntary_ctxt_switches");
  }
  return switches;
}

}  // namespace Bench
