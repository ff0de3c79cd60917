#pragma once

#include "SRLib/Gen_URL.h"

#include <functional>
#include <string>
#include <string_view>

namespace ServiceRecords {

class SSLValidationDetails;

// Checks that a server answers over TLS with a chain that the system trusts. Made by SSLValidationFactory;
// serves one validation at a time and blocks the calling thread.
class SSLValidation {
 public:
  using Messages = std::function<std::wstring(int id)>;

  // `messages`: the texts for the user, by their ids (Platform/Messages.h).
  SSLValidation(const std::wstring& url, Messages messages);
  virtual ~SSLValidation() = default;
  SSLValidation(const SSLValidation&) = delete;
  SSLValidation& operator=(const SSLValidation&) = delete;

  // True when the chain is trusted. Everything found out, failures included, is in `details`.
  [[nodiscard]] bool ValidateURL(SSLValidationDetails& details);

  virtual bool PerformValidation(SSLValidationDetails& details) = 0;

 protected:
  // The text for the user with that id, about the subject (UTF-8).
  [[nodiscard]] std::wstring Message(int id, std::string_view subject) const;

  Gen_URL url_;

 private:
  const Messages messages_;
};

}  // namespace ServiceRecords
