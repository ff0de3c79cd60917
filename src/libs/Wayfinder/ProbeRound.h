#pragma once

#include "libs/Wayfinder/BeaconAddress.h"
#include "libs/Wayfinder/CurlHandles.h"
#include "libs/Wayfinder/ProbeOutcome.h"
#include "libs/Wayfinder/TlsTrust.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace Wayfinding {

class BeaconTransfer;
class HostLookups;

// Asks beacons, kMostAtOnce at a time, in their order, each for kProbeTime at most. Ending it ends its
// transfers at once. One thread.
class ProbeRound {
 public:
  static constexpr std::size_t kMostAtOnce = 32;
  static constexpr std::chrono::seconds kProbeTime{5};

  // Called from Advance, once for each beacon; `index` is its place in the list.
  using Done = std::function<void(std::size_t index, ProbeOutcome outcome)>;

  ProbeRound(std::vector<BeaconAddress> beacons, HostLookups& lookups, Done done);
  ~ProbeRound();
  ProbeRound(const ProbeRound&) = delete;
  ProbeRound& operator=(const ProbeRound&) = delete;

  // Does what can be done without waiting.
  void Advance();
  [[nodiscard]] bool IsFinished() const { return running_.empty() && next_ == beacons_.size(); }

  // Waits until Advance has something to do, one of the descriptors is readable, or the time has passed. It
  // may end earlier.
  void Wait(std::span<const int> descriptors, std::chrono::milliseconds limit);

 private:
  using TimePoint = std::chrono::steady_clock::time_point;
  struct Probe;
  using Probes = std::list<Probe>;

  void StartMore();
  void AdvanceLookups();
  void AdvanceTransfers();
  // True when the probe has come to its end, told or not.
  bool AdvanceLookup(Probe& probe, TimePoint now);
  bool StartTransfer(Probe& probe);
  bool TakeEnd(Probe& probe, CURLcode code);
  void Report(const Probe& probe, ProbeOutcome outcome);
  [[nodiscard]] std::chrono::milliseconds TimeToNextLookupEnd() const;

  std::vector<BeaconAddress> beacons_;
  HostLookups& lookups_;
  Done done_;
  TlsTrust trust_;
  WFCurlMultiPtr transfers_;
  std::size_t next_ = 0;
  Probes running_;
};

}  // namespace Wayfinding
