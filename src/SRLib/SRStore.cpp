#include "SRLib/SRStore.h"

#include "SRLib/Platform/Configurator.h"
#include "SRLib/Records/ListMerge.h"
#include "libs/Trace/Trace.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace ServiceRecords {
namespace {

constexpr wchar_t kSelectedGateway[] = L"SR\\UserSelectedGatewayName";

template <class Gateways>
auto FindGateway(Gateways& gateways, const std::wstring& name) {
  return std::find_if(gateways.begin(), gateways.end(),
                      [&name](const SRGateway& gateway) { return gateway.Identity() == name; });
}

template <class Gateways>
auto FindDefault(Gateways& gateways) {
  return std::find_if(gateways.begin(), gateways.end(), std::mem_fn(&SRGateway::GetDefault));
}

// What tells a gateway or a beacon from its neighbours, and the discovery service's mark on it.
struct GatewayMarks {
  static const std::wstring& Key(const SRGateway& gateway) { return gateway.Identity(); }
  static bool Confirmed(const SRGateway& gateway) { return gateway.GetTrustedByDS(); }
  static void SetConfirmed(SRGateway& gateway, bool confirmed) { gateway.SetTrustedByDS(confirmed); }
};
struct BeaconMarks {
  static const std::wstring& Key(const SRBeacon& beacon) { return beacon.Identity(); }
  static bool Confirmed(const SRBeacon& beacon) { return beacon.GetDSConfirmed(); }
  static void SetConfirmed(SRBeacon& beacon, bool confirmed) { beacon.SetDSConfirmed(confirmed); }
};

template <class Item>
bool AreSameThroughout(const std::list<Item>& mine, const std::list<Item>& others) {
  return std::equal(mine.begin(), mine.end(), others.begin(), others.end(),
                    std::mem_fn(&Item::IsSameThroughout));
}

}  // namespace

bool SRStore::IsSameThroughout(const SRStore& other) const {
  return storeID_ == other.storeID_ && storeURL_ == other.storeURL_ && storeName_ == other.storeName_ &&
         type_ == other.type_ && AreSameThroughout(gateways_, other.gateways_) &&
         AreSameThroughout(internalBeacons_, other.internalBeacons_) &&
         AreSameThroughout(externalBeacons_, other.externalBeacons_);
}

std::list<SRBeacon>& SRStore::GetInternalBeacons() {
  if (internalBeacons_.empty()) {
    SRBeacon own;
    own.SetLocation(storeURL_);
    internalBeacons_.push_back(own);
  }
  return internalBeacons_;
}

std::list<SRBeacon>& SRStore::GetExternalBeacons(const Config::Configurator& configuration) {
  SRGateway defaultGateway;
  if (externalBeacons_.empty() && GetDefaultGatewayRef(defaultGateway, configuration)) {
    SRBeacon gateway;
    gateway.SetLocation(defaultGateway.GetLocation());
    externalBeacons_.push_back(gateway);
  }
  return externalBeacons_;
}

const std::list<SRBeacon>& SRStore::Beacons(BeaconType type) const {
  return type == BeaconType::Internal ? internalBeacons_ : externalBeacons_;
}

void SRStore::AddBeacon(SRBeacon beacon, BeaconType type) {
  (type == BeaconType::Internal ? internalBeacons_ : externalBeacons_).push_back(std::move(beacon));
}

void SRStore::SetAllGatewaysDSTrusted() {
  for (SRGateway& gateway : gateways_) gateway.SetTrustedByDS(true);
}

void SRStore::SetAllGatewaysUserTrusted() {
  for (SRGateway& gateway : gateways_) gateway.SetTrustedByUser(true);
}

void SRStore::SetAllBeaconsDSConfirmed() {
  for (SRBeacon& beacon : internalBeacons_) beacon.SetDSConfirmed(true);
  for (SRBeacon& beacon : externalBeacons_) beacon.SetDSConfirmed(true);
}

void SRStore::Merge(const SRStore& incoming, bool dsTrusted, const Config::Configurator& configuration) {
  SRGateway defaultBefore;
  GetDefaultGatewayRef(defaultBefore, configuration);
  TakeOver(incoming, dsTrusted);
  SetDefaultGateway(defaultBefore.GetName());
}

void SRStore::TakeOver(const SRStore& incoming, bool dsTrusted) {
  storeName_ = incoming.storeName_;
  storeURL_ = incoming.storeURL_;
  type_ = incoming.type_;
  MergeLists<GatewayMarks>(gateways_, incoming.gateways_, dsTrusted);
  MergeBeacons(internalBeacons_, incoming.internalBeacons_, dsTrusted);
  MergeBeacons(externalBeacons_, incoming.externalBeacons_, dsTrusted);
}

void SRStore::MergeGateways(const std::list<SRGateway>& incoming, bool dsTrusted,
                            const Config::Configurator& configuration) {
  SRGateway defaultBefore;
  GetDefaultGatewayRef(defaultBefore, configuration);
  MergeLists<GatewayMarks>(gateways_, incoming, dsTrusted);
  SetDefaultGateway(defaultBefore.GetName());
}

void SRStore::MergeBeacons(std::list<SRBeacon>& mine, const std::list<SRBeacon>& incoming, bool dsTrusted) {
  MergeLists<BeaconMarks>(mine, incoming, dsTrusted);
}

SRStore SRStore::AfterReplacement(const SRStore& incoming, const Config::Configurator& configuration) const {
  std::wstring selected;
  configuration.GetString(kSelectedGateway, L"", selected);
  const SRGateway* const defaultBefore = DefaultGateway(selected);
  SRStore after = *this;
  after.TakeOver(incoming, false);
  after.SetDefaultGateway(defaultBefore != nullptr ? defaultBefore->GetName() : std::wstring());
  static_cast<void>(after.GetInternalBeacons());
  if (const SRGateway* const gateway = after.DefaultGateway(selected);
      gateway != nullptr && after.externalBeacons_.empty()) {
    after.externalBeacons_.emplace_back().SetLocation(gateway->GetLocation());
  }
  return after;
}

bool SRStore::GetDefaultGatewayRef(SRGateway& out, const Config::Configurator& configuration) const {
  if (gateways_.empty()) return false;
  if (const SRGateway* selected = GatewaySelectedByUser(configuration); selected != nullptr) {
    out = *selected;
    return true;
  }
  out = MarkedOrFirstGateway();
  // Written also when the user never chose a gateway.
  SR_TRACE(0) << "Gateway selected by user doesn't match any from the store. Using default from store: "
              << out.GetLocation();
  return true;
}

const SRGateway* SRStore::GatewaySelectedByUser(const Config::Configurator& configuration) const {
  std::wstring name;
  if (!configuration.GetString(kSelectedGateway, L"", name)) return nullptr;
  SR_TRACE(0) << "Gateway selected by user in PrefPanel: " << name;
  const SRGateway* const selected = NamedGateway(name);
  if (selected == nullptr) return nullptr;
  SR_TRACE(0) << "Gateway selected by user matches one of gateways in store list.";
  return selected;
}

const SRGateway* SRStore::NamedGateway(const std::wstring& name) const {
  const auto named = name.empty() ? gateways_.end() : FindGateway(gateways_, name);
  return named != gateways_.end() ? &*named : nullptr;
}

const SRGateway& SRStore::MarkedOrFirstGateway() const {
  const auto marked = FindDefault(gateways_);
  return marked != gateways_.end() ? *marked : gateways_.front();
}

const SRGateway* SRStore::DefaultGateway(const std::wstring& selected) const {
  if (gateways_.empty()) return nullptr;
  const SRGateway* const named = NamedGateway(selected);
  return named != nullptr ? named : &MarkedOrFirstGateway();
}

bool SRStore::SetDefaultGateway(const std::wstring& name) {
  const auto named = FindGateway(gateways_, name);
  if (named == gateways_.end()) return false;
  const auto marked = FindDefault(gateways_);
  if (marked == named) return true;
  named->SetDefault(true);
  // Only the first mark is cleared: deliberate.
  if (marked != gateways_.end()) marked->SetDefault(false);
  return true;
}

}  // namespace ServiceRecords
