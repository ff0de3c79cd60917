#pragma once

#include "libs/Files/FileDescriptor.h"
#include "support/AgentTest.h"
#include "support/OpeningClient.h"
#include "support/PseudoTerminal.h"

#include <fcntl.h>
#include <termios.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

// Files that a program of the user's has the agent open.
class OpenedFiles : public TestSupport::AgentTest {
 protected:
  static constexpr const char* kTrustQuestion = "[y/N] ";

  void Start(const std::vector<std::string>& environment = {}) {
    agent_.Start(environment);
    client_.emplace(agent_.BusAddress());
  }
  // The real dialog program, which asks on a terminal.
  void AskOnTerminals() const {
    const std::filesystem::path program = "PlugIns/ServiceRecordUI.bundle/servicerecord-dialog";
    std::filesystem::remove(agent_.BundleFolder() / program);
    std::filesystem::copy_file(std::filesystem::path(SR_STAGE_DIR) / "lib/servicerecords" / program,
                               agent_.BundleFolder() / program);
  }
  Files::FileDescriptor Descriptor(const TestSupport::PseudoTerminal& terminal) const {
    return Files::FileDescriptor(::open(terminal.Path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  }

  // Windows that note their environment and accept.
  void ScriptWindows() const {
    const auto program = agent_.BundleFolder() / "PlugIns/ServiceRecordUI.bundle/servicerecord-dialog-window";
    std::filesystem::remove(program);
    std::ofstream(program) << "#!/bin/bash\nenv >\"$SR_TEST_DIALOGS/variables\"\n"
                              "read -r word version dialog size; head -c \"$size\" >/dev/null\n"
                              "echo accepted\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  }
  // Of the latest window.
  [[nodiscard]] std::vector<std::string> WindowVariables() const {
    std::ifstream file(agent_.DialogsFolder() / "variables");
    std::vector<std::string> variables;
    for (std::string line; std::getline(file, line);) variables.push_back(line);
    return variables;
  }

  // There is no room for the list.
  void FillDisk() const { std::ofstream(agent_.ConfigFolder() / "Morvane") << "no folder"; }

  std::string OneStore(const std::string& name = "a.cr") { return OpenableFile(name, {Store("s1", "One")}); }

  [[nodiscard]] std::size_t DescriptorsOfAgent() const {
    const std::filesystem::directory_iterator descriptors("/proc/" + std::to_string(agent_.Pid()) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
  }
  // Whoever has a terminal's mode puts it back when he goes, of which nothing tells.
  [[nodiscard]] bool WaitForMode(const TestSupport::PseudoTerminal& terminal, tcflag_t mode) {
    return agent_.Bus().WaitUntil([&] { return terminal.Mode().c_lflag == mode; });
  }
  // Returns when the question is on the terminal.
  void AskOn(TestSupport::PseudoTerminal& terminal) {
    static_cast<void>(client_->Open(OneStore(), Descriptor(terminal).Get()));
    static_cast<void>(terminal.ReadUntil(kTrustQuestion));
  }
  [[nodiscard]] bool WaitForDialogs(std::size_t count) {
    return agent_.Bus().WaitUntil([&] { return agent_.Dialogs().size() == count; });
  }

  std::optional<TestSupport::OpeningClient> client_;
};
