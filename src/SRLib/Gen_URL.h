#pragma once

#include <string>

// A URL (UTF-8) split once into protocol, server, port and page by simple text work: no percent-decoding, no
// user information, no validation. Not for use by several threads at once.
class Gen_URL {
 public:
  explicit Gen_URL(const std::string& url);

  [[nodiscard]] const std::string& GetServer() const { return server_; }
  [[nodiscard]] bool IsSecure() const { return protocol_ == "https"; }

  // protocol://server[:port], the protocol's default port left out.
  [[nodiscard]] std::string GetPagelessURL() const;
  // For the user's eyes: the pageless URL and the page.
  [[nodiscard]] std::string GetDisplayURL() const;
  // For requests: the pageless URL and the page. The reference is good until the next call.
  [[nodiscard]] const std::string& GetURL();

 private:
  void ExtractProtocol();
  void ExtractPage();
  void ExtractPort();

  std::string url_;
  std::string protocol_ = "http";
  std::string server_ = "No Server";
  std::string port_;
  std::string page_;
  bool omitDefaultPort_ = true;
};
