#pragma once

#include "SRLib/Platform/IServiceRecordsNotifications.h"

#include <gmock/gmock.h>

namespace TestSupport {

class MockNotifications : public ServiceRecords::IServiceRecordsNotifications {
 public:
  MOCK_METHOD(std::int32_t, ShowTrustDialog,
              (const std::wstring& certificateName, const std::wstring& storeProvider,
               const std::wstring& storeName, const std::wstring& storeURL,
               const ServiceRecords::GatewayLabel& defaultGateway,
               const std::vector<ServiceRecords::GatewayLabel>& otherGateways),
              (override));
  MOCK_METHOD(std::int32_t, ShowGatewayTrustDialog, (const std::wstring& gateway), (override));
  MOCK_METHOD(std::int32_t, ShowStoreReplaceDialog, (const std::wstring& storeName), (override));
  MOCK_METHOD(std::int32_t, ShowSRErrorDialog, (const std::wstring& title, const std::wstring& message),
              (override));
};

}  // namespace TestSupport
