#pragma once

#include "SRLib/Gen_URL.h"

#include <string>

namespace ServiceRecords {

class SSLValidationDetails;

// Checks that a server answers over TLS with a chain that the system trusts. Made by SSLValidationFactory;
// serves one validation at a time and blocks the calling thread.
class SSLValidation {
 public:
  explicit SSLValidation(const std::wstring& url);
  virtual ~SSLValidation() = default;
  SSLValidation(const SSLValidation&) = delete;
  SSLValidation& operator=(const SSLValidation&) = delete;

  // True when the chain is trusted. Everything found out, failures included, is in `details`.
  [[nodiscard]] bool ValidateURL(SSLValidationDetails& details);

  virtual bool PerformValidation(SSLValidationDetails& details) = 0;

 protected:
  Gen_URL url_;
};

}  // namespace ServiceRecords
