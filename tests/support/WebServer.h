#pragma once

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace TestSupport {

// A server block for WebServer: listens with these listen parameters ("ssl" or none), serves the documents
// folder, and whatever `directives` add.
[[nodiscard]] std::string ServerBlock(const std::string& listenParameters, const std::string& directives);

// nginx on a free port of the loopback address. Accepts connections from the moment on which this object
// exists, and ends with it. One thread.
class WebServer {
 public:
  // `serverBlock`: one server { } block, from TestAuthority::TlsServerBlock or ServerBlock. In it, @PORT@
  // stands for the port and @DOCUMENTS@ for the documents folder.
  explicit WebServer(const std::string& serverBlock);

  [[nodiscard]] std::uint16_t Port() const { return port_; }
  // scheme://localhost:port
  [[nodiscard]] std::string Address(const std::string& scheme) const;

  // The file that is served under /name.
  [[nodiscard]] std::filesystem::path Document(const std::string& name) const {
    return folder_.Path() / "documents" / name;
  }

 private:
  void WriteConfiguration(std::string serverBlock) const;

  TemporaryFolder folder_;
  std::uint16_t port_ = 0;
  std::optional<ChildProcess> process_;
};

}  // namespace TestSupport
