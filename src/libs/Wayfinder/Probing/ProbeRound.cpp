#include "libs/Wayfinder/Probing/ProbeRound.h"

#include "libs/Wayfinder/Probing/BeaconTransfer.h"

#include <algorithm>
#include <new>
#include <optional>
#include <utility>

namespace Wayfinding {

using Wording::Worded;
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

milliseconds TimeUntil(steady_clock::time_point deadline) {
  const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
  return std::max(left, milliseconds(0));
}

WFCurlMultiPtr NewTransfers() {
  static const bool libraryIsReady = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  WFCurlMultiPtr transfers(libraryIsReady ? curl_multi_init() : nullptr);
  if (transfers == nullptr) throw std::bad_alloc();
  return transfers;
}

}  // namespace

struct ProbeRound::Probe {
  std::size_t question = 0;
  std::size_t store = 0;  // on whose behalf
  TimePoint deadline;
  std::size_t url = 0;  // which of the address's URLs is being tried
  BeaconTransfer::Method method = BeaconTransfer::Method::Head;
  std::vector<std::string> heardFrom;
  std::optional<BeaconTransfer> transfer;
};

ProbeRound::ProbeRound(std::vector<Question> questions, std::vector<std::string> stores, HostLookups& lookups,
                       Done done)
    : questions_(std::move(questions)),
      addresses_(questions_.size()),
      stores_(std::move(stores)),
      lookups_(lookups),
      done_(std::move(done)),
      open_(questions_.size()),
      start_(steady_clock::now()),
      unknown_(stores_.size()),
      ready_(stores_.size()),
      transfers_(NewTransfers()),
      runningFor_(stores_.size()) {
  for (std::size_t i = 0; i < questions_.size(); ++i) {
    const BeaconAddress& beacon = questions_[i].beacon;
    if (beacon.isLoopback && !beacon.isNumeric) addresses_[i] = {"127.0.0.1", "::1"};
    StoreQueues& queue = beacon.isNumeric || beacon.isLoopback ? ready_ : unknown_;
    queue.Add(i, questions_[i].stores);
  }
}

ProbeRound::~ProbeRound() {
  running_.clear();  // transfers leave their multi handle before it goes
}

void ProbeRound::Advance() {
  lookups_.ClearEnded();
  AdvanceLookups();
  StartReady();  // before an answer is told, so that MayHearFrom knows of those whose name was just found
  AdvanceTransfers();
  StartReady();  // in the places that became free
  unknown_.OfferInTurns(
      [this](std::size_t question, std::size_t store) { return StartLookup(question, store); });
}

void ProbeRound::StartReady() {
  ready_.OfferInTurns(
      [this](std::size_t question, std::size_t store) { return StartProbe(question, store); });
}

bool ProbeRound::StartLookup(std::size_t question, std::size_t store) {
  const std::optional<HostLookup> names = lookups_.Start(HostOf(question), stores_[store]);
  if (!names) return false;
  lookingUp_.push_back({.question = question, .deadline = steady_clock::now() + kProbeTime, .names = *names});
  return true;
}

void ProbeRound::AdvanceLookups() {
  const TimePoint now = steady_clock::now();
  std::erase_if(lookingUp_, [this, now](const Lookup& lookup) {
    const bool isOver = HasEnded(lookup.names) || now >= lookup.deadline;
    if (isOver) EndLookup(lookup);
    return isOver;
  });
}

void ProbeRound::EndLookup(const Lookup& lookup) {
  const std::string& host = HostOf(lookup.question);
  if (!HasEnded(lookup.names)) {
    return Report(lookup.question,
                  {.reason = Worded("{host}: no answer from the name lookup", {{"host", host}})});
  }
  if (lookup.names.get().empty())
    return Report(lookup.question, {.reason = Worded("{host}: name not found", {{"host", host}})});
  addresses_[lookup.question] = lookup.names.get();
  ready_.Add(lookup.question, questions_[lookup.question].stores);
}

bool ProbeRound::StartProbe(std::size_t question, std::size_t store) {
  // A store has no more places than are free, so that there is always one for another store.
  if (runningFor_[store] >= kMostAtOnce - running_.size()) return false;
  ++runningFor_[store];
  Probe& probe = running_.emplace_back();
  probe.question = question;
  probe.store = store;
  probe.deadline = steady_clock::now() + kProbeTime;
  StartTransfer(probe);
  return true;
}

void ProbeRound::StartTransfer(Probe& probe) {
  const std::vector<BeaconURL>& urls = questions_[probe.question].beacon.urls;
  // A first URL that is dropped silently leaves half of the time to the second.
  const milliseconds limit = TimeUntil(probe.deadline) / static_cast<long>(urls.size() - probe.url);
  probe.transfer.emplace(transfers_.get(), trust_, urls[probe.url], probe.method, addresses_[probe.question],
                         std::max(limit, milliseconds(1)));
}

void ProbeRound::AdvanceTransfers() {
  int count = 0;
  curl_multi_perform(transfers_.get(), &count);
  while (const CURLMsg* const message = curl_multi_info_read(transfers_.get(), &count)) {
    const CURL* const handle = message->easy_handle;
    const CURLcode code = message->data.result;
    const auto probe = std::find_if(running_.begin(), running_.end(), [handle](const Probe& candidate) {
      return candidate.transfer->Is(handle);
    });
    if (probe != running_.end()) TakeEnd(probe, code);
  }
}

void ProbeRound::TakeEnd(Probes::iterator probe, CURLcode code) {
  std::string peer = probe->transfer->HeardFrom(code);
  if (!peer.empty()) probe->heardFrom.push_back(std::move(peer));
  if (probe->transfer->WantsGet(code)) {
    probe->method = BeaconTransfer::Method::Get;
    return StartTransfer(*probe);
  }
  ProbeOutcome outcome = probe->transfer->Judge(code);
  const std::size_t question = probe->question;
  const bool hasAnother = probe->url + 1 < questions_[question].beacon.urls.size();
  // A certificate for another name stands: a portal would only go on to lie over http.
  if (outcome.answer == ProbeAnswer::None && hasAnother) {
    ++probe->url;
    return StartTransfer(*probe);
  }
  outcome.heardFrom = std::move(probe->heardFrom);
  --runningFor_[probe->store];
  running_.erase(probe);
  Report(question, std::move(outcome));
}

void ProbeRound::Report(std::size_t question, ProbeOutcome outcome) {
  --open_;
  done_(question, std::move(outcome));
}

bool ProbeRound::MayHearFrom(const std::string& address) const {
  constexpr std::chrono::seconds kTimeToFind{1};
  if (!lookingUp_.empty() && steady_clock::now() < start_ + kTimeToFind) return true;
  return std::any_of(running_.begin(), running_.end(), [&](const Probe& probe) {
    const std::vector<std::string>& addresses = addresses_[probe.question];
    return HostOf(probe.question) == address ||
           std::find(addresses.begin(), addresses.end(), address) != addresses.end();
  });
}

const std::string& ProbeRound::HostOf(std::size_t question) const {
  return questions_[question].beacon.urls.front().host;
}

void ProbeRound::Wait(std::span<const int> descriptors, milliseconds limit) {
  std::vector<curl_waitfd> watched;
  for (const int descriptor : descriptors) watched.push_back({descriptor, CURL_WAIT_POLLIN, 0});
  watched.push_back({lookups_.Descriptor(), CURL_WAIT_POLLIN, 0});
  // Lookups are given up at a time, too, and some releases of libcurl set no timer when they give up one
  // address of a host and go on to the next.
  constexpr milliseconds kLongestWait{250};
  curl_multi_poll(transfers_.get(), watched.data(), static_cast<unsigned int>(watched.size()),
                  static_cast<int>(std::min(limit, kLongestWait).count()), nullptr);
}

}  // namespace Wayfinding
