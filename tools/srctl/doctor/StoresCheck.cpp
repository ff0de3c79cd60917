#include "doctor/StoresCheck.h"

#include "doctor/HelpingThreads.h"
#include "libs/ThreadSafety/ThreadSafety.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <iostream>
#include <optional>
#include <thread>

namespace Srctl::StoreChecks {
namespace {

// They wait for the network most of their time.
constexpr std::size_t kMostThreads = 32;

using Findings = std::vector<Finding>;

// A line on standard error that goes away again.
class Progress {
 public:
  explicit Progress(std::size_t count) : count_(count), isShown_(::isatty(STDERR_FILENO) == 1) {}
  ~Progress() { Clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Show(std::size_t done) const {
    if (!isShown_) return;
    std::cerr << "\rLooking at the stores: " << done << " of " << count_ << " done." << kToEndOfLine
              << std::flush;
  }
  void Clear() const {
    if (isShown_) std::cerr << '\r' << kToEndOfLine << std::flush;
  }

 private:
  static constexpr char kToEndOfLine[] = "\x1B[K";

  std::size_t count_;
  bool isShown_;
};

// One look at all stores, shared by its threads.
class Look {
 public:
  explicit Look(const std::vector<Situation>& stores) : stores_(stores), findings_(stores.size()) {}

  // What each thread does.
  void Work() {
    for (std::size_t store = next_++; store < stores_.size(); store = next_++) {
      Findings findings;
      CheckStore(stores_[store], [&findings](const Finding& finding) { findings.push_back(finding); });
      const ThreadSafety::MutexLock lock(mutex_);
      findings_[store] = std::move(findings);
      ++done_;
      changed_.notify_one();
    }
  }

  // The findings about the store, once they are there.
  [[nodiscard]] Findings Await(std::size_t store, const Progress& progress) {
    const ThreadSafety::MutexLock lock(mutex_);
    for (; !findings_[store]; changed_.wait(mutex_)) progress.Show(done_);
    return std::move(*findings_[store]);
  }

 private:
  const std::vector<Situation>& stores_;
  std::atomic<std::size_t> next_ = 0;
  ThreadSafety::Mutex mutex_;
  std::condition_variable_any changed_;
  std::vector<std::optional<Findings>> findings_ SR_GUARDED_BY(mutex_);
  std::size_t done_ SR_GUARDED_BY(mutex_) = 0;
};

void CheckSideBySide(const std::vector<Situation>& stores, const FindingReport& report,
                     const Progress& progress) {
  Look look(stores);
  const auto threads = StartHelpers(std::min(stores.size(), kMostThreads), [&look] { look.Work(); });
  if (threads.empty()) look.Work();
  for (std::size_t store = 0; store < stores.size(); ++store) {
    const Findings findings = look.Await(store, progress);
    progress.Clear();
    for (const Finding& finding : findings) report(finding);
  }
}

}  // namespace

void CheckStores(const std::vector<Situation>& stores, const FindingReport& report) {
  const Progress progress(stores.size());
  if (stores.size() > 1) return CheckSideBySide(stores, report, progress);
  for (const Situation& store : stores) {
    progress.Show(0);
    CheckStore(store, [&](const Finding& finding) {
      progress.Clear();
      report(finding);
      progress.Show(0);
    });
  }
}

}  // namespace Srctl::StoreChecks
