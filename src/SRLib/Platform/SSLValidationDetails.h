#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ServiceRecords {

// What a server validation found out.
class SSLValidationDetails {
 public:
  static constexpr std::uint32_t kSuccess = 0;
  static constexpr std::uint32_t kServerNotContacted = 1;
  static constexpr std::uint32_t kCertificatesNotFetched = 2;
  static constexpr std::uint32_t kUserDoesNotTrustServer = 3;

  SSLValidationDetails();

  void Reset();
  void AddError(const std::wstring& message) { Errors.push_back(message); }

  std::wstring Organization;         // of the first (leaf) certificate
  std::wstring Issuer;               // issuer of the last certificate of the chain
  std::vector<std::wstring> Errors;  // for the user, in the order added
  std::uint32_t Result = kSuccess;
  std::wstring Reason;            // why the server is not trusted, one sentence for the user; may be empty
  std::wstring TechnicalDetails;  // for whoever is to help; may be empty
};

}  // namespace ServiceRecords
