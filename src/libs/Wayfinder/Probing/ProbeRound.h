#pragma once

#include "libs/Wayfinder/Probing/BeaconAddress.h"
#include "libs/Wayfinder/Probing/CurlHandles.h"
#include "libs/Wayfinder/Probing/HostLookups.h"
#include "libs/Wayfinder/Probing/ProbeOutcome.h"
#include "libs/Wayfinder/Probing/StoreQueues.h"
#include "libs/Wayfinder/Probing/TlsTrust.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <list>
#include <span>
#include <string>
#include <vector>

namespace Wayfinding {

// Asks beacons, kMostAtOnce at a time, each for kProbeTime at most, after a name lookup that may take as
// long. A store's beacons have their turn in their order, and neither names that hang nor silent servers of
// some stores keep another one waiting. Ending it ends its transfers at once. One thread.
class ProbeRound {
 public:
  static constexpr std::size_t kMostAtOnce = 64;
  static constexpr std::chrono::seconds kProbeTime{5};

  struct Question {
    BeaconAddress beacon;
    std::vector<std::size_t> stores = {};  // that name it, as places in the list of stores
  };
  // Called from Advance, once for each question; `index` is its place in the list.
  using Done = std::function<void(std::size_t index, ProbeOutcome outcome)>;

  // `stores`: their URLs. Throws std::bad_alloc, as Advance does, when memory is short.
  ProbeRound(std::vector<Question> questions, std::vector<std::string> stores, HostLookups& lookups,
             Done done);
  ~ProbeRound();
  ProbeRound(const ProbeRound&) = delete;
  ProbeRound& operator=(const ProbeRound&) = delete;

  // Does what can be done without waiting.
  void Advance();
  [[nodiscard]] bool IsFinished() const { return open_ == 0; }

  // Whether a server at this address is being asked, or perhaps will be at once: names that are found at all
  // mostly are within the first second.
  [[nodiscard]] bool MayHearFrom(const std::string& address) const;

  // Waits until Advance has something to do, one of the descriptors is readable, or the time has passed. It
  // may end earlier.
  void Wait(std::span<const int> descriptors, std::chrono::milliseconds limit);

 private:
  using TimePoint = std::chrono::steady_clock::time_point;
  struct Lookup {
    std::size_t question = 0;
    TimePoint deadline;
    HostLookup names;
  };
  struct Probe;
  using Probes = std::list<Probe>;

  bool StartLookup(std::size_t question, std::size_t store);
  void AdvanceLookups();
  void EndLookup(const Lookup& lookup);
  void StartReady();
  bool StartProbe(std::size_t question, std::size_t store);
  void AdvanceTransfers();
  void StartTransfer(Probe& probe);
  void TakeEnd(Probes::iterator probe, CURLcode code);
  void Report(std::size_t question, ProbeOutcome outcome);
  [[nodiscard]] const std::string& HostOf(std::size_t question) const;

  std::vector<Question> questions_;
  std::vector<std::vector<std::string>> addresses_;  // of their hosts, as far as found
  std::vector<std::string> stores_;
  HostLookups& lookups_;
  Done done_;
  std::size_t open_;
  TimePoint start_;
  StoreQueues unknown_;  // questions whose host is to be looked up
  std::deque<Lookup> lookingUp_;
  StoreQueues ready_;  // questions whose host is known
  TlsTrust trust_;
  WFCurlMultiPtr transfers_;
  Probes running_;
  std::vector<std::size_t> runningFor_;  // how many of them, by store
};

}  // namespace Wayfinding
