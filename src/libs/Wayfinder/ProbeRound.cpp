#include "libs/Wayfinder/ProbeRound.h"

#include "libs/Wayfinder/BeaconTransfer.h"
#include "libs/Wayfinder/HostLookups.h"

#include <algorithm>
#include <utility>

namespace Wayfinding {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

milliseconds TimeUntil(steady_clock::time_point deadline) {
  const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
  return std::max(left, milliseconds(0));
}

WFCurlMultiPtr NewTransfers() {
  static const bool libraryIsReady = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  return WFCurlMultiPtr(libraryIsReady ? curl_multi_init() : nullptr);
}

}  // namespace

struct ProbeRound::Probe {
  std::size_t index = 0;
  TimePoint deadline;
  std::size_t url = 0;  // which of the address's URLs is being tried
  BeaconTransfer::Method method = BeaconTransfer::Method::Head;
  std::shared_ptr<const HostLookup> lookup;
  std::vector<std::string> addresses;
  std::unique_ptr<BeaconTransfer> transfer;
};

ProbeRound::ProbeRound(std::vector<BeaconAddress> beacons, HostLookups& lookups, Done done)
    : beacons_(std::move(beacons)), lookups_(lookups), done_(std::move(done)), transfers_(NewTransfers()) {}

ProbeRound::~ProbeRound() {
  running_.clear();  // transfers leave their multi handle before it goes
}

void ProbeRound::Advance() {
  lookups_.ClearEnded();
  AdvanceLookups();
  AdvanceTransfers();
  StartMore();
}

void ProbeRound::StartMore() {
  while (running_.size() < kMostAtOnce && next_ < beacons_.size()) {
    Probe& probe = running_.emplace_back();
    probe.index = next_++;
    probe.deadline = steady_clock::now() + kProbeTime;
    const BeaconAddress& beacon = beacons_[probe.index];
    if (beacon.isLoopback && !beacon.isNumeric) probe.addresses = {"127.0.0.1", "::1"};
    const bool known = beacon.isNumeric || beacon.isLoopback;
    const bool ended = known ? StartTransfer(probe) : AdvanceLookup(probe, steady_clock::now());
    if (ended) running_.pop_back();
  }
}

void ProbeRound::AdvanceLookups() {
  const TimePoint now = steady_clock::now();
  for (auto probe = running_.begin(); probe != running_.end();) {
    const bool ended = probe->transfer == nullptr && AdvanceLookup(*probe, now);
    probe = ended ? running_.erase(probe) : std::next(probe);
  }
}

bool ProbeRound::AdvanceLookup(Probe& probe, TimePoint now) {
  const std::string& host = beacons_[probe.index].urls.front().host;
  if (probe.lookup == nullptr) probe.lookup = lookups_.Start(host);
  if (now >= probe.deadline) {
    Report(probe, {.reason = host + ": no answer from the name lookup"});
    return true;
  }
  if (probe.lookup == nullptr || !probe.lookup->HasEnded()) return false;
  probe.addresses = probe.lookup->Addresses();
  return StartTransfer(probe);
}

bool ProbeRound::StartTransfer(Probe& probe) {
  const std::vector<BeaconURL>& urls = beacons_[probe.index].urls;
  if (probe.addresses.empty() && !beacons_[probe.index].isNumeric) {
    Report(probe, {.reason = urls.front().host + ": name not found"});
    return true;
  }
  // A first URL that is dropped silently leaves half of the time to the second.
  milliseconds limit = TimeUntil(probe.deadline) / static_cast<long>(urls.size() - probe.url);
  limit = std::max(limit, milliseconds(1));
  probe.transfer.reset();
  if (transfers_ != nullptr) {
    probe.transfer = BeaconTransfer::Start(transfers_.get(), trust_, urls[probe.url], probe.method,
                                           probe.addresses, limit);
  }
  if (probe.transfer != nullptr) return false;
  Report(probe, {.reason = urls[probe.url].url + ": cannot be asked"});
  return true;
}

void ProbeRound::AdvanceTransfers() {
  if (transfers_ == nullptr) return;
  int count = 0;
  curl_multi_perform(transfers_.get(), &count);
  while (const CURLMsg* const message = curl_multi_info_read(transfers_.get(), &count)) {
    const CURL* const handle = message->easy_handle;
    const CURLcode code = message->data.result;
    const auto probe = std::find_if(running_.begin(), running_.end(), [handle](const Probe& candidate) {
      return candidate.transfer != nullptr && candidate.transfer->Is(handle);
    });
    if (probe != running_.end() && TakeEnd(*probe, code)) running_.erase(probe);
  }
}

bool ProbeRound::TakeEnd(Probe& probe, CURLcode code) {
  if (probe.transfer->WantsGet(code)) {
    probe.method = BeaconTransfer::Method::Get;
    return StartTransfer(probe);
  }
  ProbeOutcome outcome = probe.transfer->Judge(code);
  const bool hasAnother = probe.url + 1 < beacons_[probe.index].urls.size();
  // A certificate for another name stands: a portal would only go on to lie over http.
  if (outcome.answer == ProbeAnswer::None && hasAnother) {
    ++probe.url;
    return StartTransfer(probe);
  }
  Report(probe, std::move(outcome));
  return true;
}

void ProbeRound::Report(const Probe& probe, ProbeOutcome outcome) {
  done_(probe.index, std::move(outcome));
}

milliseconds ProbeRound::TimeToNextLookupEnd() const {
  milliseconds soonest = milliseconds::max();
  for (const Probe& probe : running_) {
    if (probe.transfer == nullptr) soonest = std::min(soonest, TimeUntil(probe.deadline));
  }
  return soonest;
}

void ProbeRound::Wait(std::span<const int> descriptors, milliseconds limit) {
  std::vector<curl_waitfd> watched;
  for (const int descriptor : descriptors) watched.push_back({descriptor, CURL_WAIT_POLLIN, 0});
  watched.push_back({lookups_.Descriptor(), CURL_WAIT_POLLIN, 0});
  // Some releases of libcurl set no timer when they give up one address of a host and go on to the next.
  constexpr milliseconds kLongestWait{250};
  const milliseconds wait = std::min({limit, TimeToNextLookupEnd(), kLongestWait});
  curl_multi_poll(transfers_.get(), watched.data(), static_cast<unsigned int>(watched.size()),
                  static_cast<int>(wait.count()), nullptr);
}

}  // namespace Wayfinding
