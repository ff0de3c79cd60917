#include "SRLib/Provider/StoreConnection.h"

#include "SRLib/Provider/Opening.h"
#include "SRLib/Provider/ProviderTrace.h"
#include "SRLib/SRHTTPRequest.h"
#include "SRLib/SRHTTPRequestFactory.h"
#include "SRLib/SRTrustedHTTPRequest.h"
#include "libs/Wayfinder/Wayfinder.h"

#include <memory>

namespace ServiceRecords {
namespace {

constexpr int kSecondsToDecide = 120;

// The numbers are the authentication manager's. An Enterprise gateway without a mode of its own gets 0,
// whatever the message calls it.
std::uint32_t GatewayMode(SRGateway::GatewayEdition edition, SRGateway::AGMode mode) {
  switch (edition) {
    case SRGateway::GatewayEdition::Standard:
    case SRGateway::GatewayEdition::Advanced:
      return MORVANE_WARDEN_MODE_REWRITE;
    case SRGateway::GatewayEdition::Enterprise:
      if (mode == SRGateway::AGMode::ENTCVPN_RW) return MORVANE_WARDEN_MODE_VPN;
      if (mode == SRGateway::AGMode::SG_RW) return MORVANE_WARDEN_MODE_SG_REWRITE;
      SR_PROVIDER_TRACE(2)
          << "AG mode needs to be specified for Enterprise gateway type. By default set to SG mode.";
      return MORVANE_WARDEN_MODE_SG;
  }
  return MORVANE_WARDEN_MODE_SG;
}

// Name and location must outlive the record.
SRWardenRequest_Data ConvertStoreToWardenFormat(const SRStore& store, const std::wstring& gatewayName,
                                                const std::wstring& gatewayLocation,
                                                SRGateway::GatewayEdition edition,
                                                SRGateway::GatewayAuthentication authentication,
                                                SRGateway::AGMode mode) {
  SRWardenRequest_Data data;
  data.StoreURL = store.GetStoreURL();
  data.StoreName = store.GetStoreName();
  data.Route.GatewayName = gatewayName.c_str();
  if (gatewayLocation.empty()) return data;
  data.Route.GatewayLocation = gatewayLocation.c_str();
  if (edition <= SRGateway::GatewayEdition::Enterprise) {
    data.Route.Edition = static_cast<std::uint32_t>(edition);
  }
  if (authentication <= SRGateway::GatewayAuthentication::GatewayKnows) {
    data.Route.Authentication = static_cast<std::uint32_t>(authentication);
  }
  data.Route.GatewayMode = GatewayMode(edition, mode);
  return data;
}

}  // namespace

std::optional<std::uint32_t> StoreConnection::DecidedLocation(const std::wstring& storeURL) const {
  std::uint32_t location = parts_.locationRelativeTo(storeURL);
  for (int waits = 0; location == Wayfinder::kDeciding; ++waits) {
    if (waits == kSecondsToDecide) {
      SR_PROVIDER_TRACE(0)
          << "MakeConnection: Not requesting headers because network location is: deciding. ";
      return std::nullopt;
    }
    if (Opening::IsWithdrawn() || !parts_.waitOneSecond()) return std::nullopt;
    location = parts_.locationRelativeTo(storeURL);
  }
  return location;
}

bool StoreConnection::RequestDirectly(const std::wstring& storeURL, std::wstring& response) const {
  const std::unique_ptr<SRHTTPRequest> request = parts_.requests.Create(storeURL);
  if (!request->SendHTTPRequest(L"")) return false;
  response = request->GetBody();
  return true;
}

bool StoreConnection::RequestThroughWarden(const SRStore& store, std::wstring& response,
                                           bool& canceled) const {
  SRGateway gateway;
  std::wstring name;
  std::wstring location;
  SRWardenRequest_Data data;
  if (store.GetDefaultGatewayRef(gateway, parts_.configuration)) {
    name = gateway.GetName();
    location = gateway.GetLocation();
    data = ConvertStoreToWardenFormat(store, name, location, gateway.GetEdition(),
                                      gateway.GetAuthentication(), gateway.GetAGMode());
  } else {
    data = ConvertStoreToWardenFormat(store, name, location, {}, {}, {});
  }
  return SRTrustedHTTPRequest(parts_.requests, parts_.warden).MakeRequest(data, response, canceled);
}

bool StoreConnection::Make(const SRStore& store, std::wstring& response, bool& canceled) const {
  const std::optional<std::uint32_t> location = DecidedLocation(store.GetStoreURL());
  if (!location) return false;
  switch (*location) {
    case Wayfinder::kNone:
      SR_PROVIDER_TRACE(0)
          << "MakeConnection: No point in attempting to request headers from DS, because network "
             "location is: "
          << *location;
      return false;
    case Wayfinder::kLAN:
    case Wayfinder::kVPN:
      SR_PROVIDER_TRACE(0) << "MakeConnection: direct to the store " << store.GetStoreID()
                           << ", because network location is: " << *location;
      return RequestDirectly(store.GetStoreURL(), response);
    default:
      SR_PROVIDER_TRACE(0) << "MakeConnection: using Warden for the store " << store.GetStoreID()
                           << ", because network location is: " << *location;
      return RequestThroughWarden(store, response, canceled);
  }
}

}  // namespace ServiceRecords
