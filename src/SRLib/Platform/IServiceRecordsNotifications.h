#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace ServiceRecords {

// A gateway as a dialog shows it: name and URL.
using GatewayLabel = std::pair<std::wstring, std::wstring>;

// The core's only way to reach the user. Every call blocks the calling thread until the user has answered;
// only kAccepted is consent.
class IServiceRecordsNotifications {
 public:
  static constexpr std::int32_t kAccepted = 100;
  static constexpr std::int32_t kDeclined = 0;  // also: no user interface
  static constexpr std::int32_t kNoAnswer = -1;

  virtual ~IServiceRecordsNotifications() = default;

  virtual std::int32_t ShowTrustDialog(const std::wstring& certificateName, const std::wstring& storeProvider,
                                       const std::wstring& storeName, const std::wstring& storeURL,
                                       const GatewayLabel& defaultGateway,
                                       const std::vector<GatewayLabel>& otherGateways) = 0;
  virtual std::int32_t ShowGatewayTrustDialog(const std::wstring& gateway) = 0;
  virtual std::int32_t ShowStoreReplaceDialog(const std::wstring& storeName) = 0;
  virtual std::int32_t ShowSRErrorDialog(const std::wstring& title, const std::wstring& message) = 0;
};

}  // namespace ServiceRecords
