#include "MacISRNotificationManager.h"

#include "Bus/StoreDictionary.h"
#include "Dialogs/FurtherKeys.h"
#include "Dialogs/UIBundleLoader.h"
#include "Process/BackgroundTasks.h"
#include "SRLib/Provider/Opening.h"
#include "SRLib/SRProvider.h"
#include "libs/Files/Bundle.h"
#include "libs/PropertyList/PropertyList.h"
#include "libs/Termination/TerminationEvent.h"
#include "libs/Text/TextHelpers.h"

#include <string>
#include <utility>
#include <vector>

namespace ServiceRecords {
namespace {

PropertyList::Array GatewayDictionaries(const GatewayLabel& defaultGateway,
                                        const std::vector<GatewayLabel>& otherGateways) {
  PropertyList::Array gateways;
  gateways.reserve(otherGateways.size() + 1);
  const auto& [defaultName, defaultURL] = defaultGateway;
  if (!defaultURL.empty()) gateways.emplace_back(Agent::GatewayDictionary(defaultName, defaultURL, true));
  for (const auto& [name, url] : otherGateways)
    gateways.emplace_back(Agent::GatewayDictionary(name, url, false));
  return gateways;
}

// Whatever else a module returns is no consent.
std::int32_t AnswerOf(int answer) {
  if (answer == 1) return IServiceRecordsNotifications::kAccepted;
  if (Termination::Requested()) {
    Opening::NoteHindrance(Openings::Outcome::Ended);
  } else if (answer == SRUI_COULD_NOT_ASK) {
    Opening::NoteHindrance(Openings::Outcome::CouldNotAsk);
  }
  return IServiceRecordsNotifications::kDeclined;
}

}  // namespace

void MacIServiceRecordsNotifications::Init() {
  static MacIServiceRecordsNotifications notifications;
  SRProvider::Instance().InitNotificationManager(&notifications);
}

const SRUIProtocol* MacIServiceRecordsNotifications::SRUIClass() {
  const Opening* const opening = Opening::OfThisThread();
  const Opening::Origin origin = opening != nullptr ? opening->GetOrigin() : Opening::Origin();
  const std::vector<const char*> desktop = Display::PointersTo(origin.desktop);
  const SRUIHost host{SRUI_PROTOCOL_VERSION, Termination::Descriptor(), origin.terminalDescriptor,
                      origin.withdrawalDescriptor, desktop.data()};
  return Agent::UIBundleLoader(Files::Bundle::Main().BuiltInPlugInsPath(), host)
      .PrincipalClass(__PRETTY_FUNCTION__);
}

const SRUIProtocol* MacIServiceRecordsNotifications::UIToAskWith() {
  if (Opening::IsWithdrawn()) return nullptr;
  const SRUIProtocol* userInterface = SRUIClass();
  if (userInterface == nullptr) Opening::NoteHindrance(Openings::Outcome::CouldNotAsk);
  return userInterface;
}

std::int32_t MacIServiceRecordsNotifications::ShowTrustDialog(
    const std::wstring& certificateName, const std::wstring& storeProvider, const std::wstring& storeName,
    const std::wstring& storeURL, const GatewayLabel& defaultGateway,
    const std::vector<GatewayLabel>& otherGateways) {
  const SRUIProtocol* userInterface = UIToAskWith();
  if (userInterface == nullptr) return kDeclined;
  PropertyList::Dictionary details{{"StoreName", util::narrow(storeName)},
                                   {"StoreProvider", util::narrow(storeProvider)},
                                   {"CertificateName", util::narrow(certificateName)},
                                   {"StoreURL", util::narrow(storeURL)}};
  PropertyList::Array gateways = GatewayDictionaries(defaultGateway, otherGateways);
  if (!gateways.empty()) details.Set("StoreGateways", std::move(gateways));
  Agent::FurtherKeys::AddTrust(details, storeURL);
  Agent::FurtherKeys::AddDefaultGateway(details, defaultGateway);
  Agent::FurtherKeys::AddOpening(details);
  const Agent::BackgroundTasks::UserWait wait(Agent::BackgroundTasks::UserWait::End::InTurn);
  return AnswerOf(userInterface->addStore(PropertyList::Write(details).c_str()));
}

// Nobody is asked about a gateway alone: the trust dialog shows a store's gateways together with the store.
std::int32_t MacIServiceRecordsNotifications::ShowGatewayTrustDialog(const std::wstring& /*gateway*/) {
  return kNoAnswer;
}

std::int32_t MacIServiceRecordsNotifications::ShowStoreReplaceDialog(const std::wstring& storeName) {
  const SRUIProtocol* userInterface = UIToAskWith();
  if (userInterface == nullptr) return kDeclined;
  PropertyList::Dictionary details{{"StoreName", util::narrow(storeName)}};
  Agent::FurtherKeys::AddReplacement(details);
  Agent::FurtherKeys::AddOpening(details);
  // Shown while the list is locked.
  const Agent::BackgroundTasks::UserWait wait(Agent::BackgroundTasks::UserWait::End::AtOnce);
  return AnswerOf(userInterface->replaceStore(PropertyList::Write(details).c_str()));
}

std::int32_t MacIServiceRecordsNotifications::ShowSRErrorDialog(const std::wstring& title,
                                                                const std::wstring& message) {
  if (Opening::IsWithdrawn()) return kNoAnswer;
  const SRUIProtocol* userInterface = SRUIClass();
  if (userInterface == nullptr) return kNoAnswer;
  PropertyList::Dictionary details{{"ErrorTitle", util::narrow(title)},
                                   {"ErrorMessage", util::narrow(message)}};
  Agent::FurtherKeys::AddProblem(details);
  Agent::FurtherKeys::AddOpening(details);
  // On a terminal it stands behind the other dialogs there.
  const Agent::BackgroundTasks::UserWait wait(Agent::BackgroundTasks::UserWait::End::InTurn);
  userInterface->errorMessage(PropertyList::Write(details).c_str());
  return kNoAnswer;
}

}  // namespace ServiceRecords
