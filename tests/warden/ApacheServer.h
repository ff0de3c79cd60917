#pragma once

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"
#include "warden/ReservedPort.h"

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

// The Apache web server behind TLS on a free port of the loopback address, serving the document "discovery".
// It accepts connections from the moment on which this object exists, and ends with it. One thread.
class ApacheServer {
 public:
  // `modules`: names as in "auth_digest", on top of those for files and password files. `directives`: for the
  // served folder; @FOLDER@ stands for a folder that `files` (name and content) are written to.
  ApacheServer(const std::vector<std::string>& modules, const std::string& directives,
               const std::vector<std::pair<std::string, std::string>>& files,
               const std::vector<std::string>& environment = {});

  // https://localhost:port
  [[nodiscard]] std::wstring Address() const;
  [[nodiscard]] std::string Log() const { return process_->Output(); }

 private:
  void WriteConfiguration(const std::vector<std::string>& modules, std::string directives) const;

  TemporaryFolder folder_;
  ReservedPort port_;
  std::optional<ChildProcess> process_;
};

}  // namespace TestSupport
