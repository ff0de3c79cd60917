#include "Process/LaunchArguments.h"

#include "libs/Files/Bundle.h"
#include "libs/Files/SystemError.h"
#include "libs/Text/LogText.h"
#include "libs/Text/TextHelpers.h"

#include <getopt.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <span>

namespace Agent {
namespace {

constexpr int kUsageError = 2;

constexpr char kUsage[] =
    "Usage: ServiceRecords [FILE...]\n"
    "Without a file this is the agent: it keeps the user's application stores and serves\n"
    "them on the session bus until it is terminated. With service-record files it hands\n"
    "them to the running agent, or starts one, and waits until they have been dealt with.\n"
    "\n"
    "  -h, --help     print this text\n"
    "      --version  print the version\n";

constexpr std::array<option, 3> kOptions{
    {{"help", no_argument, nullptr, 'h'}, {"version", no_argument, nullptr, 'V'}, {}}};

LaunchArguments EndWith(int status) {
  return {.files = {}, .exitStatus = status};
}

LaunchArguments Complain() {
  std::cerr << kUsage << std::flush;
  return EndWith(kUsageError);
}

LaunchArguments Inform(const std::string& text) {
  std::cout << text << std::flush;
  return EndWith(EXIT_SUCCESS);
}

// The bus carries UTF-8 only, and another file may have the name that is left of this one's.
LaunchArguments Refuse(const std::string& file) {
  std::cerr << "ServiceRecords: the name of \"" << util::narrow(util::widen(file))
            << "\" is not UTF-8; rename the file and try again\n"
            << std::flush;
  return EndWith(EXIT_FAILURE);
}

// Why the file cannot be read; empty when it can.
std::string ProblemWith(const std::string& file) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(file, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
    return "is not a file that holds a document";
  if (!error && ::access(file.c_str(), R_OK) == 0) return {};
  return "cannot be read: " + (error ? error : Files::LastError()).message();
}

bool IsReadable(const std::string& file) {
  const std::string problem = ProblemWith(file);
  if (!problem.empty())
    std::cerr << "ServiceRecords: \"" << util::LogText::Line(file) << "\" " << problem << '\n' << std::flush;
  return problem.empty();
}

LaunchArguments FilesToDeliver(std::span<char*> names) {
  LaunchArguments arguments;
  for (const std::string name : names) {
    if (name.empty()) return Complain();
    arguments.files.push_back(std::filesystem::absolute(name).string());
    if (!util::IsUTF8(arguments.files.back())) return Refuse(name);
  }
  for (const std::string& file : arguments.files) {
    if (!IsReadable(file)) arguments.hasUnreadable = true;
  }
  return arguments;
}

}  // namespace

LaunchArguments LaunchArguments::Read(int argc, char** argv) {
  switch (::getopt_long(argc, argv, "h", kOptions.data(), nullptr)) {
    case 'h':
      return Inform(kUsage);
    case 'V':
      return Inform("ServiceRecords " + Files::Bundle::Main().InfoString("MorvaneVersionString") + "\n");
    case -1:
      break;
    default:
      return Complain();
  }
  const std::span<char*> names =
      std::span(argv, static_cast<std::size_t>(argc)).subspan(static_cast<std::size_t>(optind));
  // A lone "--" means files that somebody's script did not find; it does not mean the agent.
  return names.empty() && argc > 1 ? Complain() : FilesToDeliver(names);
}

}  // namespace Agent
