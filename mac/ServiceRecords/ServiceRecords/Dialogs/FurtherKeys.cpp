#include "Dialogs/FurtherKeys.h"

#include "Bus/StoreDictionary.h"
#include "Dialogs/ServerLabel.h"
#include "SRLib/Provider/DialogSubject.h"
#include "SRLib/Provider/Opening.h"
#include "libs/Text/TextHelpers.h"

#include <cstdint>
#include <utility>

using PropertyList::Dictionary;
using ServiceRecords::DialogSubject;
using ServiceRecords::Opening;
using ServiceRecords::SRStore;

namespace Agent::FurtherKeys {
namespace {

void AddHost(Dictionary& details, const std::string& key, const std::string& url) {
  const ServerLabel server(url);
  details.Set(key, server.host);
  if (server.asciiHost != server.host) details.Set(key + "ASCII", server.asciiHost);
}

void AddBeacons(Dictionary& details, const char* key, const std::list<ServiceRecords::SRBeacon>& beacons) {
  PropertyList::Array locations;
  for (const auto& beacon : beacons) locations.emplace_back(util::narrow(beacon.GetLocation()));
  details.Set(key, std::move(locations));
}

PropertyList::Array Gateways(const SRStore& store) {
  PropertyList::Array gateways;
  for (const auto& gateway : store.GetGateways()) {
    Dictionary details = GatewayDictionary(gateway.GetName(), gateway.GetLocation(), gateway.GetDefault());
    details.Set("GatewayAuthType", static_cast<std::uint32_t>(gateway.GetAuthentication()));
    details.Set("GatewayEdition", static_cast<std::uint32_t>(gateway.GetEdition()));
    details.Set("GatewayRewriteMode", static_cast<std::uint32_t>(gateway.GetAGMode()));
    gateways.emplace_back(std::move(details));
  }
  return gateways;
}

Dictionary Record(const SRStore& store) {
  Dictionary record{{"StoreName", util::narrow(store.GetStoreName())},
                    {"StoreURL", util::narrow(store.GetStoreURL())}};
  AddHost(record, "StoreHost", util::narrow(store.GetStoreURL()));
  if (!store.GetGateways().empty()) record.Set("StoreGateways", Gateways(store));
  AddBeacons(record, "InternalBeacons", store.Beacons(ServiceRecords::BeaconType::Internal));
  AddBeacons(record, "ExternalBeacons", store.Beacons(ServiceRecords::BeaconType::External));
  return record;
}

void AddText(Dictionary& details, const char* key, const std::string& text) {
  if (!text.empty()) details.Set(key, text);
}

}  // namespace

void AddOpening(Dictionary& details) {
  const Opening* const opening = Opening::OfThisThread();
  if (opening == nullptr) return;
  details.Set("OpeningID", opening->GetOrigin().id);
  details.Set("DocumentPath", opening->GetOrigin().path);
}

void AddTrust(Dictionary& details, const std::wstring& storeURL) {
  const auto* const verified = DialogSubject::OfThisThread<ServiceRecords::VerifiedServer>();
  if (verified == nullptr) return;
  AddHost(details, "StoreHost", util::narrow(storeURL));
  AddHost(details, "VerifiedHost", util::narrow(verified->url));
  details.Set("VerifiedServer", verified->isGateway ? "gateway" : "store");
}

void AddDefaultGateway(Dictionary& details, const ServiceRecords::GatewayLabel& defaultGateway) {
  const auto& [name, url] = defaultGateway;
  if (url.empty()) AddText(details, "DefaultGatewayWithoutURL", util::narrow(name));
}

void AddReplacement(Dictionary& details) {
  const auto* const replacement = DialogSubject::OfThisThread<ServiceRecords::Replacement>();
  if (replacement == nullptr) return;
  details.Set("HeldStore", Record(replacement->held));
  details.Set("NewStore",
              Record(replacement->held.AfterReplacement(replacement->incoming, replacement->configuration)));
}

void AddProblem(Dictionary& details) {
  const auto* const problem = DialogSubject::OfThisThread<ServiceRecords::ServerProblem>();
  if (problem == nullptr) return;
  details.Set("Server", ServerLabel(util::narrow(problem->url)).WithPort());
  AddText(details, "StoreName", util::narrow(problem->storeName));
  AddText(details, "ErrorReason", util::narrow(problem->reason));
  AddText(details, "ErrorDetails", util::narrow(problem->details));
}

}  // namespace Agent::FurtherKeys
