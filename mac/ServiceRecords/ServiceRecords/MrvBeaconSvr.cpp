#include "MrvBeaconSvr.h"

#include "DbgTrace.h"
#include "GenericFactories.h"
#include "SRLib/Provider/StoreSnapshot.h"
#include "SRLib/SRProvider.h"
#include "libs/Bus/BusText.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Wayfinder/NetworkLocationName.h"
#include "libs/Wayfinder/Wayfinder.h"
#include "libs/Wording/MessageDictionary.h"

using ServiceRecords::SRGateway;
using ServiceRecords::SRProvider;
using ServiceRecords::SRStore;

namespace {

constexpr std::size_t kMaximumURLBytes = std::size_t{64} << 10;

// Of text that the bus carries.
Wayfinding::LocationDecision Explanation(const char* method, const std::string& storeURL) {
  CSRLog(0, "[+] %s (%@)", method, storeURL);
  Wayfinding::LocationDecision explanation =
      Wayfinder::sharedInstance().explainLocationRelativeToStoreURL(storeURL);
  CSRLog(0, "[-] %s (%@)", method, Wayfinding::NetworkLocationName(explanation.location));
  explanation.reason = explanation.reason.WithForeign(
      [](const std::string& foreign) { return Bus::Text(util::widen(foreign)); });
  return explanation;
}

}  // namespace

MrvBeaconSvr* NewMrvBeaconService() {
  return new MrvBeaconSvr;
}

std::uint64_t MrvBeaconSvr::checkLocationForStore(const std::string& storeURL) {
  constexpr char kMethod[] = "MrvBeaconSvr::checkLocationForStore";
  CSRLog(0, "[+] %s (%@)", kMethod, storeURL);
  const std::uint64_t location = Wayfinder::sharedInstance().locationRelativeToStoreURL(storeURL);
  CSRLog(0, "[-] %s (%@)", kMethod, Wayfinding::NetworkLocationName(location));
  return location;
}

std::tuple<std::uint64_t, std::string> MrvBeaconSvr::explainLocationForStore(const std::string& storeURL) {
  const Wayfinding::LocationDecision explanation =
      Explanation("MrvBeaconSvr::explainLocationForStore", storeURL);
  return {explanation.location, explanation.reason.English()};
}

std::tuple<std::uint64_t, PropertyList::Dictionary> MrvBeaconSvr::describeLocationForStore(
    const std::string& storeURL) {
  const Wayfinding::LocationDecision explanation =
      Explanation("MrvBeaconSvr::describeLocationForStore", storeURL);
  return {explanation.location, Wording::MessageDictionary::Of(explanation.reason)};
}

std::optional<PropertyList::Dictionary> MrvBeaconSvr::getCurrentGatewayForStore(const std::string& storeURL) {
  constexpr char kMethod[] = "MrvBeaconSvr::getCurrentGatewayForStore";
  if (storeURL.empty()) {
    CSRLog(0, "[*] %s Called with invalid params (null)", kMethod);
    return std::nullopt;
  }
  if (storeURL.size() > kMaximumURLBytes) {
    CSRLog(0, "[*] %s Called with a URL of more than %lu bytes", kMethod, kMaximumURLBytes);
    return std::nullopt;
  }
  CSRLog(0, "[+] %s (%@)", kMethod, storeURL);
  const auto store = SRProvider::Instance().GetPublishedStoreFromURL(util::widen(storeURL));
  SRGateway gateway;
  std::optional<PropertyList::Dictionary> result;
  if (store != nullptr &&
      store->GetDefaultGatewayRef(gateway, CGenericFactories::Instance().UserConfiguration())) {
    result =
        PropertyList::Dictionary{{"GatewayURL", Bus::Text(gateway.GetLocation())},
                                 {"GatewayName", Bus::Text(gateway.GetName())},
                                 {"GatewayAuthType", static_cast<std::uint32_t>(gateway.GetAuthentication())},
                                 {"GatewayEdition", static_cast<std::uint32_t>(gateway.GetEdition())}};
  }
  CSRLog(0, "[-] %s", kMethod);
  return result;
}

std::uint32_t MrvBeaconSvr::networkReachabilityFlags() {
  constexpr char kMethod[] = "MrvBeaconSvr::networkReachabilityFlags";
  CSRLog(0, "[+] %s", kMethod);
  const std::uint32_t flags = Wayfinder::sharedInstance().networkReachabilityFlags();
  CSRLog(0, "[-] %s (%d)", kMethod, flags);
  return flags;
}
