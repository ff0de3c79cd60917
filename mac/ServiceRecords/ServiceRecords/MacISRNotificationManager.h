#pragma once

#include "SRLib/Platform/IServiceRecordsNotifications.h"

struct SRUIProtocol;

namespace ServiceRecords {

// Forwards every dialog to the UI plug-in bundle "ServiceRecordUI.bundle" of the main bundle. Without a
// usable plug-in nothing is accepted.
class MacIServiceRecordsNotifications : public IServiceRecordsNotifications {
 public:
  // Makes the one instance and registers it with the provider.
  static void Init();

  // The plug-in's entry points, looked for afresh at every call, or null. What is returned stays good.
  [[nodiscard]] static const SRUIProtocol* SRUIClass();

  std::int32_t ShowTrustDialog(const std::wstring& certificateName, const std::wstring& storeProvider,
                               const std::wstring& storeName, const std::wstring& storeURL,
                               const GatewayLabel& defaultGateway,
                               const std::vector<GatewayLabel>& otherGateways) override;
  std::int32_t ShowGatewayTrustDialog(const std::wstring& gateway) override;
  std::int32_t ShowStoreReplaceDialog(const std::wstring& storeName) override;
  std::int32_t ShowSRErrorDialog(const std::wstring& title, const std::wstring& message) override;

 private:
  // The same for a question, of which this thread's opening hears when nobody can be asked.
  [[nodiscard]] static const SRUIProtocol* UIToAskWith();
};

}  // namespace ServiceRecords
