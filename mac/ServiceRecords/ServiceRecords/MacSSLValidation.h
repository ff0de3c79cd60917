#pragma once

#include "MacCertificate.h"
#include "ResourceKeeper.h"
#include "SRLib/SSLValidation.h"
#include "SRLib/SSLValidationFactory.h"
#include "libs/Transfer/OpenSslHandles.h"
#include "libs/Transfer/PeerProblem.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ServiceRecords {

// A HEAD request for the server itself, over libcurl, whose handshake gives the chain that the system trusts.
// Ended early by termination.
class MacSSLValidation : public SSLValidation {
 public:
  explicit MacSSLValidation(const std::wstring& url) : SSLValidation(url, util::MessageFromResourceW) {}
  bool PerformValidation(SSLValidationDetails& details) override;

  // Logs, and adds to `details`, what a validation without certificates means that ended with this code.
  void ReportFailure(std::int64_t errorCode, SSLValidationDetails& details) const;

  // The outcome of the last validation: the stream's error code (StreamErrorCode.h), and the trusted chain,
  // the server's certificate first, the root last.
  [[nodiscard]] std::int64_t ErrorCode() const { return errorCode_; }
  [[nodiscard]] const std::vector<MacCertificate>& Certificates() const { return certificates_; }

 private:
  // Adds why, in a sentence for the user and in words for whoever is to help.
  void Explain(SSLValidationDetails& details) const;
  void DownloadHead(const std::string& url);
  void TakeChain(const STACK_OF(X509) * chain);
  void ReportReadError(const std::string& reason) const;

  bool downloading_ = false;  // while the stream is open; one validation at a time
  std::int64_t errorCode_ = 0;
  Transfer::PeerProblem problem_;
  std::string readError_;
  std::vector<MacCertificate> certificates_;
};

class MacSSLValidationFactory : public SSLValidationFactory {
 public:
  // Registers the one factory.
  static void Init();
  [[nodiscard]] std::unique_ptr<SSLValidation> Create(const std::wstring& url) override;
};

}  // namespace ServiceRecords
