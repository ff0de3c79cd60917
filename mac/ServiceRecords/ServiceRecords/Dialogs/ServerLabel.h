#pragma once

#include <string>

namespace Agent {

// The server of a URL for people, and in the form in which it is looked up and named by its certificate.
struct ServerLabel {
  // `url` is UTF-8. One that nobody is asked for is taken as it is written.
  explicit ServerLabel(const std::string& url);

  std::string host;       // in Unicode
  std::string asciiHost;  // the same where there is no other form
  std::string port;       // empty for the scheme's own

  // host[:port]
  [[nodiscard]] std::string WithPort() const;
};

}  // namespace Agent
