#pragma once

#include "libs/Address/SplitURL.h"

#include <string>

// A URL (UTF-8) split once into protocol, server, port and page by simple text work: no percent-decoding, no
// user information, no validation. Not for use by several threads at once.
class Gen_URL {
 public:
  explicit Gen_URL(const std::string& url);

  [[nodiscard]] const std::string& GetServer() const { return split_.server; }
  [[nodiscard]] bool IsSecure() const { return split_.IsSecure(); }
  [[nodiscard]] const Address::SplitURL& GetSplitURL() const { return split_; }

  // protocol://server[:port], the protocol's default port left out.
  [[nodiscard]] std::string GetPagelessURL() const;
  // For the user's eyes: the pageless URL and the page.
  [[nodiscard]] std::string GetDisplayURL() const;
  // For requests: the pageless URL and the page. The reference is good until the next call.
  [[nodiscard]] const std::string& GetURL();

 private:
  [[nodiscard]] std::string WithPage() const;

  Address::SplitURL split_;
  std::string url_;
};
